// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstdint>
#include <new>
#include <string>
#include <vector>

// The vocabulary of every service boundary: return codes, strings and sequences that own their
// store or view a caller's, and the two helpers that turn a bad code into an exception. None of
// these types locks; an object belongs to one thread at a time.
namespace FACE {

constexpr uint32_t kUnbounded = 0xFFFFFFFFu;

// A bounded or unbounded string in one of two storage modes: managed text that the object owns, or
// an unmanaged view of a buffer that the caller owns and that must outlive the object. An invalid
// string has length, capacity and bound 0 and a null buffer.
class String {
  public:
    enum RETURN_CODE {
        NO_ERROR = 0,
        INSUFFICIENT_BOUND = 1,
        INSUFFICIENT_MEMORY = 2,
        PRECONDITION_VIOLATED = 3
    };

    /// Managed, unbounded, empty.
    String() = default;
    /// Managed and empty with that bound; 0 and the all-ones value are refused.
    String(uint32_t bound, RETURN_CODE& rc);
    /// Managed copy of `text`, bounded by its length.
    String(const char* text, RETURN_CODE& rc);
    /// Unmanaged view of a writable buffer of at least bound + 1 bytes; writes the terminator.
    String(char* buffer, uint32_t length, uint32_t bound, RETURN_CODE& rc);
    /// Unmanaged view of `text`, copying nothing; for literals. Not explicit on purpose. No
    /// operation of this class writes through it, and the caller must not either.
    String(const char* text);
    /// Always managed, whatever the source was.
    String(const String& other);
    /// The target becomes managed and takes bound and validity of the source.
    String& operator=(const String& other);
    ~String() = default;

    void clear();
    char* buffer();
    const char* buffer() const;
    uint32_t length() const;
    uint32_t capacity() const;
    uint32_t bound() const;
    /// The character at min(i, length()): an index past the end gives the terminator.
    char& operator[](uint32_t i);
    const char& operator[](uint32_t i) const;
    bool is_managed() const { return m_valid && m_managed; }
    bool is_bounded() const { return m_valid && m_bound != kUnbounded; }
    bool is_valid() const { return m_valid; }

    RETURN_CODE append(const String& text);
    RETURN_CODE append(const char& character);

  private:
    RETURN_CODE appendBytes(const char* bytes, uint32_t count);

    std::string m_text;
    uint32_t m_bound = kUnbounded;
    bool m_valid = true;
    bool m_managed = true;
    bool m_readOnly = false;  // an unmanaged view of a literal
    char* m_external = nullptr;
    uint32_t m_externalLength = 0;
};

/// The text as a std::string; empty for an invalid string.
std::string toStdString(const String& text);

// An array in the same two storage modes.
template <typename T>
class Sequence {
  public:
    enum RETURN_CODE {
        NO_ERROR = 0,
        INSUFFICIENT_BOUND = 1,
        INSUFFICIENT_MEMORY = 2,
        PRECONDITION_VIOLATED = 3
    };

    /// Managed, unbounded, empty.
    Sequence() = default;
    /// Managed and empty with that bound; 0 and the all-ones value are refused.
    Sequence(uint32_t bound, RETURN_CODE& rc) : m_bound(bound) {
        m_valid = bound != 0 && bound != kUnbounded;
        rc = m_valid ? NO_ERROR : PRECONDITION_VIOLATED;
    }
    /// Unmanaged view of `count` elements of a caller's array that has room for `bound` of them. A
    /// bound of all ones is unbounded: the caller vouches for the room.
    Sequence(T* elements, uint32_t count, uint32_t bound, RETURN_CODE& rc)
        : m_bound(bound), m_managed(false), m_external(elements), m_externalCount(count) {
        m_valid = elements != nullptr && bound != 0 && count <= bound;
        rc = m_valid ? NO_ERROR : PRECONDITION_VIOLATED;
    }

    RETURN_CODE append(const T& element) {
        if (!m_valid) {
            return PRECONDITION_VIOLATED;
        }
        if (m_bound != kUnbounded && uint64_t{length()} + 1 > m_bound) {
            return INSUFFICIENT_BOUND;
        }
        try {
            if (m_managed) {
                m_elements.push_back(element);
            } else {
                m_external[m_externalCount] = element;
                ++m_externalCount;
            }
        } catch (const std::bad_alloc&) {
            return INSUFFICIENT_MEMORY;
        }
        return NO_ERROR;
    }

    /// Sets the element count. An unmanaged sequence takes no count above its bound.
    RETURN_CODE resize(uint32_t count) {
        if (!m_valid) {
            return PRECONDITION_VIOLATED;
        }
        if (m_bound != kUnbounded && count > m_bound) {
            return INSUFFICIENT_BOUND;
        }
        try {
            if (m_managed) {
                m_elements.resize(count);
            } else {
                m_externalCount = count;
            }
        } catch (const std::bad_alloc&) {
            return INSUFFICIENT_MEMORY;
        }
        return NO_ERROR;
    }

    void clear() { resize(0); }
    uint32_t length() const {
        if (!m_valid) {
            return 0;
        }
        return m_managed ? static_cast<uint32_t>(m_elements.size()) : m_externalCount;
    }
    uint32_t bound() const { return m_valid ? m_bound : 0; }
    T* buffer() { return !m_valid ? nullptr : m_managed ? m_elements.data() : m_external; }
    const T* buffer() const {
        return !m_valid ? nullptr : m_managed ? m_elements.data() : m_external;
    }
    /// The caller keeps `i` below length().
    T& operator[](uint32_t i) { return buffer()[i]; }
    const T& operator[](uint32_t i) const { return buffer()[i]; }
    bool is_managed() const { return m_valid && m_managed; }
    bool is_bounded() const { return m_valid && m_bound != kUnbounded; }
    bool is_valid() const { return m_valid; }

  private:
    std::vector<T> m_elements;
    uint32_t m_bound = kUnbounded;
    bool m_valid = true;
    bool m_managed = true;
    T* m_external = nullptr;
    uint32_t m_externalCount = 0;
};

struct RETURN_CODE_TYPE {
    // The numbers are part of the contract: callers compare them with < and >.
    enum Value : uint32_t {
        NO_ERROR = 0,
        NO_ACTION = 1,
        NOT_AVAILABLE = 2,
        INVALID_PARAM = 3,
        INVALID_CONFIG = 4,
        INVALID_MODE = 5,
        TIMED_OUT = 6,
        ADDR_IN_USE = 7,
        PERMISSION_DENIED = 8,
        MESSAGE_STALE = 9,
        IN_PROGRESS = 10,
        CONNECTION_CLOSED = 11,
        DATA_BUFFER_TOO_SMALL = 12,
        DATA_OVERFLOW = 13
    };

    /// The name as text; "RC_UNKNOWN" for any other number.
    static String ToString(Value value);
};

/// Returns when `rc` is NO_ERROR. Otherwise prints "<file>[<line>]:<CODE> <message>" and throws
/// std::runtime_error with that text.
void Return_Code_Value_No_Error(const char* file, int line, const char* message,
                                RETURN_CODE_TYPE::Value rc);
/// The same, but lets NO_ACTION pass too.
void Return_Code_Value_No_Error_No_Action(const char* file, int line, const char* message,
                                          RETURN_CODE_TYPE::Value rc);

}  // namespace FACE
