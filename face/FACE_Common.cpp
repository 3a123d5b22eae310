// SPDX-License-Identifier: Apache-2.0
#include "face/FACE_Common.h"

#include <array>
#include <cstring>
#include <stdexcept>

#include "utility/Console.h"

namespace FACE {
namespace {

// One below the all-ones value, which as a bound means "none".
uint32_t lengthOf(const char* text) {
    return static_cast<uint32_t>(std::min<size_t>(std::strlen(text), kUnbounded - 1));
}

// What an index into an invalid string refers to. Set anew each time, so that a caller who writes
// through it spoils nothing.
char& dummyTerminator() {
    static thread_local char terminator;
    terminator = '\0';
    return terminator;
}

const char* orEmpty(const char* text) {
    return text != nullptr ? text : "";
}

[[noreturn]] void throw_error(const char* file, int line, const char* message,
                              RETURN_CODE_TYPE::Value rc) {
    const std::string text = std::string(orEmpty(file)) + '[' + std::to_string(line) +
                             "]:" + toStdString(RETURN_CODE_TYPE::ToString(rc)) + ' ' +
                             orEmpty(message);
    // Printed and flushed first: nobody may be there to catch the exception.
    Console::line(text);
    throw std::runtime_error(text);
}

}  // namespace

String::String(uint32_t bound, RETURN_CODE& rc)
    : m_bound(bound), m_valid(bound != 0 && bound != kUnbounded) {
    rc = m_valid ? NO_ERROR : PRECONDITION_VIOLATED;
}

String::String(const char* text, RETURN_CODE& rc) : m_valid(text != nullptr) {
    rc = m_valid ? NO_ERROR : PRECONDITION_VIOLATED;
    if (!m_valid) {
        return;
    }
    m_bound = lengthOf(text);
    try {
        m_text.assign(text, m_bound);
    } catch (const std::bad_alloc&) {
        m_valid = false;
        rc = INSUFFICIENT_MEMORY;
    }
}

String::String(char* buffer, uint32_t length, uint32_t bound, RETURN_CODE& rc)
    : m_bound(bound),
      m_valid(buffer != nullptr && bound != 0 && bound != kUnbounded && length <= bound),
      m_managed(false),
      m_external(buffer),
      m_externalLength(length) {
    rc = m_valid ? NO_ERROR : PRECONDITION_VIOLATED;
    if (m_valid) {
        m_external[length] = '\0';
    }
}

String::String(const char* text)
    : m_valid(text != nullptr),
      m_managed(false),
      m_readOnly(true),
      // Nothing here writes through the pointer while m_readOnly is set.
      m_external(const_cast<char*>(text)) {
    if (m_valid) {
        m_bound = m_externalLength = lengthOf(text);
    }
}

String::String(const String& other) : m_bound(other.m_bound), m_valid(other.m_valid) {
    try {
        m_text = toStdString(other);
    } catch (const std::bad_alloc&) {
        m_valid = false;
    }
}

String& String::operator=(const String& other) {
    m_bound = other.m_bound;
    bool valid = other.m_valid;
    if (valid) {
        try {
            // Copied whole before anything is given up: `other` may be this object or a view of it.
            m_text = toStdString(other);
        } catch (const std::bad_alloc&) {
            valid = false;
        }
    }
    m_valid = valid;
    m_managed = true;
    m_readOnly = false;
    m_external = nullptr;
    m_externalLength = 0;
    return *this;
}

void String::clear() {
    if (!m_valid) {
        return;
    }
    if (m_managed) {
        m_text.clear();
        return;
    }
    if (m_readOnly) {
        // A literal takes no terminator. From here on the view has a store of its own, as large as
        // its bound, so that what is appended later does not reach the literal either.
        try {
            m_text.assign(m_bound, '\0');
        } catch (const std::bad_alloc&) {
            m_valid = false;
            return;
        }
        m_external = m_text.data();
        m_readOnly = false;
    }
    m_externalLength = 0;
    m_external[0] = '\0';
}

char* String::buffer() {
    return !m_valid ? nullptr : m_managed ? m_text.data() : m_external;
}

const char* String::buffer() const {
    return !m_valid ? nullptr : m_managed ? m_text.data() : m_external;
}

uint32_t String::length() const {
    return !m_valid ? 0 : m_managed ? static_cast<uint32_t>(m_text.size()) : m_externalLength;
}

uint32_t String::capacity() const {
    return !m_valid ? 0 : m_managed ? static_cast<uint32_t>(m_text.capacity()) : m_bound;
}

uint32_t String::bound() const {
    return m_valid ? m_bound : 0;
}

char& String::operator[](uint32_t i) {
    return m_valid ? buffer()[std::min(i, length())] : dummyTerminator();
}

const char& String::operator[](uint32_t i) const {
    return m_valid ? buffer()[std::min(i, length())] : dummyTerminator();
}

String::RETURN_CODE String::append(const String& text) {
    return text.m_valid ? appendBytes(text.buffer(), text.length()) : PRECONDITION_VIOLATED;
}

String::RETURN_CODE String::append(const char& character) {
    return appendBytes(&character, 1);
}

String::RETURN_CODE String::appendBytes(const char* bytes, uint32_t count) {
    if (!m_valid) {
        return PRECONDITION_VIOLATED;
    }
    // In 64 bits the all-ones bound needs no case of its own: it is the largest length there is.
    if (uint64_t{length()} + count > m_bound) {
        return INSUFFICIENT_BOUND;
    }
    if (count == 0) {
        return NO_ERROR;
    }
    if (m_managed) {
        try {
            m_text.append(bytes, count);
        } catch (const std::bad_alloc&) {
            return INSUFFICIENT_MEMORY;
        }
        return NO_ERROR;
    }
    // Never a literal: its bound is its length, so nothing fits.
    std::memmove(m_external + m_externalLength, bytes, count);
    m_externalLength += count;
    m_external[m_externalLength] = '\0';
    return NO_ERROR;
}

std::string toStdString(const String& text) {
    return text.is_valid() ? std::string(text.buffer(), text.length()) : std::string();
}

String RETURN_CODE_TYPE::ToString(Value value) {
    static constexpr std::array<const char*, 14> kNames = {"NO_ERROR",
                                                           "NO_ACTION",
                                                           "NOT_AVAILABLE",
                                                           "INVALID_PARAM",
                                                           "INVALID_CONFIG",
                                                           "INVALID_MODE",
                                                           "TIMED_OUT",
                                                           "ADDR_IN_USE",
                                                           "PERMISSION_DENIED",
                                                           "MESSAGE_STALE",
                                                           "IN_PROGRESS",
                                                           "CONNECTION_CLOSED",
                                                           "DATA_BUFFER_TOO_SMALL",
                                                           "DATA_OVERFLOW"};
    return String(value < kNames.size() ? kNames[value] : "RC_UNKNOWN");
}

void Return_Code_Value_No_Error(const char* file, int line, const char* message,
                                RETURN_CODE_TYPE::Value rc) {
    if (rc != RETURN_CODE_TYPE::NO_ERROR) {
        throw_error(file, line, message, rc);
    }
}

void Return_Code_Value_No_Error_No_Action(const char* file, int line, const char* message,
                                          RETURN_CODE_TYPE::Value rc) {
    if (rc > RETURN_CODE_TYPE::NO_ACTION) {
        throw_error(file, line, message, rc);
    }
}

}  // namespace FACE
