// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

// Small routines on text. Whitespace is blank, line feed, carriage return, tab, form feed and
// vertical tab, whatever the locale. No function keeps what it is given; any thread may call.
namespace StringUtils {

/// A copy without leading, trailing, or leading and trailing whitespace.
std::string ltrim(const std::string& text);
std::string rtrim(const std::string& text);
std::string trim(const std::string& text);

/// Replaces in place each character of `text` that occurs in `set`. A null pointer does nothing,
/// and so does a character that would be replaced by itself. The characters of `set` take their
/// turns in order: a replacement that stands later in `set` is no special case, the text ends up
/// the same.
void cstr_replace(char* text, const char* set, char replacement);

/// Copies like strncpy, `size` bytes with the rest zeroed, and always terminates: `dst` holds at
/// most size - 1 characters. A size of 0 leaves `dst` alone, a null `src` is an empty text. Returns
/// `dst`.
char* strncpy_prot(char* dst, const char* src, unsigned size);

/// The consecutive pieces of at most `size` characters, appended to `out`. Neither an empty text
/// nor a size of 0 gives a piece.
void splitToChunks(const std::string& text, unsigned size, std::vector<std::string>& out);
std::vector<std::string> splitToChunks(const std::string& text, unsigned size);

/// The items with the delimiter between them and none at the end.
std::string join(const std::vector<std::string>& items, char delimiter);

/// The pieces between delimiters. Empty pieces are kept, except that a delimiter at the end of the
/// text has none after it; so an empty text gives no piece at all.
std::vector<std::string> split(const std::string& text, char delimiter);

}  // namespace StringUtils
