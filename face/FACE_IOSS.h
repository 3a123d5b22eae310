// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "face/FACE_Common.h"

// The interfaces of the I/O services: serial lines, memory regions, queue devices. A connection is
// opened by name, the name being also that of its configuration container; its id is a 64-bit
// number that stays valid for the life of the service. Time-outs are in nanoseconds; -1 is without
// limit.
namespace FACE::IOSS {

// A tagged value. Deliberately no union: every alternative has a member of its own, and asking for
// a reference to one retags the value.
class IO_PARAMETER_VALUE_TYPE {
  public:
    enum RETURN_CODE { NO_ERROR = 0, BAD_DISCRIMINATOR = 1 };

    int32_t descriminator() const { return m_tag; }

    void short_value(int16_t v) { store(0, m_short, v); }
    int16_t& short_value() { return retag(0, m_short); }
    void short_value(int16_t& out, RETURN_CODE& rc) const { fetch(0, m_short, out, rc); }

    void long_value(int32_t v) { store(1, m_long, v); }
    int32_t& long_value() { return retag(1, m_long); }
    void long_value(int32_t& out, RETURN_CODE& rc) const { fetch(1, m_long, out, rc); }

    void longlong_value(int64_t v) { store(2, m_longlong, v); }
    int64_t& longlong_value() { return retag(2, m_longlong); }
    void longlong_value(int64_t& out, RETURN_CODE& rc) const { fetch(2, m_longlong, out, rc); }

    void ushort_value(uint16_t v) { store(3, m_ushort, v); }
    uint16_t& ushort_value() { return retag(3, m_ushort); }
    void ushort_value(uint16_t& out, RETURN_CODE& rc) const { fetch(3, m_ushort, out, rc); }

    void ulong_value(uint32_t v) { store(4, m_ulong, v); }
    uint32_t& ulong_value() { return retag(4, m_ulong); }
    void ulong_value(uint32_t& out, RETURN_CODE& rc) const { fetch(4, m_ulong, out, rc); }

    void ulonglong_value(uint64_t v) { store(5, m_ulonglong, v); }
    uint64_t& ulonglong_value() { return retag(5, m_ulonglong); }
    void ulonglong_value(uint64_t& out, RETURN_CODE& rc) const { fetch(5, m_ulonglong, out, rc); }

    void float_value(float v) { store(6, m_float, v); }
    float& float_value() { return retag(6, m_float); }
    void float_value(float& out, RETURN_CODE& rc) const { fetch(6, m_float, out, rc); }

    void double_value(double v) { store(7, m_double, v); }
    double& double_value() { return retag(7, m_double); }
    void double_value(double& out, RETURN_CODE& rc) const { fetch(7, m_double, out, rc); }

    void longdouble_value(long double v) { store(8, m_longdouble, v); }
    long double& longdouble_value() { return retag(8, m_longdouble); }
    void longdouble_value(long double& out, RETURN_CODE& rc) const {
        fetch(8, m_longdouble, out, rc);
    }

    void char_value(int8_t v) { store(9, m_char, v); }
    int8_t& char_value() { return retag(9, m_char); }
    void char_value(int8_t& out, RETURN_CODE& rc) const { fetch(9, m_char, out, rc); }

    void boolean_value(bool v) { store(10, m_boolean, v); }
    bool& boolean_value() { return retag(10, m_boolean); }
    void boolean_value(bool& out, RETURN_CODE& rc) const { fetch(10, m_boolean, out, rc); }

    void octet_value(uint8_t v) { store(11, m_octet, v); }
    uint8_t& octet_value() { return retag(11, m_octet); }
    void octet_value(uint8_t& out, RETURN_CODE& rc) const { fetch(11, m_octet, out, rc); }

  private:
    template <typename T>
    void store(int32_t tag, T& member, T v) {
        m_tag = tag;
        member = v;
    }
    template <typename T>
    T& retag(int32_t tag, T& member) {
        m_tag = tag;
        return member;
    }
    template <typename T>
    void fetch(int32_t tag, const T& member, T& out, RETURN_CODE& rc) const {
        if (m_tag != tag) {
            rc = BAD_DISCRIMINATOR;
            return;
        }
        out = member;
        rc = NO_ERROR;
    }

    int32_t m_tag = 0;
    int16_t m_short = 0;
    int32_t m_long = 0;
    int64_t m_longlong = 0;
    uint16_t m_ushort = 0;
    uint32_t m_ulong = 0;
    uint64_t m_ulonglong = 0;
    float m_float = 0;
    double m_double = 0;
    long double m_longdouble = 0;
    int8_t m_char = 0;
    bool m_boolean = false;
    uint8_t m_octet = 0;
};

struct IO_PARAMETER_TYPE {
    uint16_t id = 0;
    IO_PARAMETER_VALUE_TYPE value;
};

struct IO_PARAMETER_TRANSACTION_TYPE {
    uint32_t transaction = 0;
    Sequence<IO_PARAMETER_TYPE> parameters;
};

struct CONNECTION_STATUS_TYPE {
    int64_t timestamp = 0;
    uint32_t kind = 0;
    uint32_t state = 0;
};

// What a service calls when a connection has data.
class IO_Callback {
  public:
    virtual ~IO_Callback() = default;
    virtual void Process_Notification_Event(long long id, int event) = 0;
};

// The operations that all I/O services share; the payloads differ.
template <typename READ_PAYLOAD, typename WRITE_PAYLOAD>
class IO_Service_Interface {
  public:
    virtual ~IO_Service_Interface() = default;
    virtual void Initialize(const String& path, RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Open_Connection(const String& name, long long timeout, long long& id,
                                 RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Close_Connection(long long id, RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Read(long long id, long long timeout, READ_PAYLOAD& payload,
                      RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Write(long long id, long long timeout, const WRITE_PAYLOAD& payload,
                       RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Configure_Connection_Parameters(long long id, long long timeout,
                                                 const IO_PARAMETER_TRANSACTION_TYPE& parameters,
                                                 RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Get_Connection_Configuration(long long id, long long timeout,
                                              IO_PARAMETER_TRANSACTION_TYPE& parameters,
                                              RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Configure_Bus_Parameters(long long id, long long timeout,
                                          IO_PARAMETER_TRANSACTION_TYPE& parameters,
                                          RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Get_Bus_Configuration(long long id, long long timeout,
                                       IO_PARAMETER_TRANSACTION_TYPE& parameters,
                                       RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Get_Connection_Status(long long id, CONNECTION_STATUS_TYPE& status,
                                       RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Get_Bus_Status(long long id, uint16_t& status, RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Register_Notification_Event(long long id, IO_Callback* callback,
                                             RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Unregister_Notification_Event(long long id, RETURN_CODE_TYPE::Value& rc) = 0;
};

namespace Serial {
struct READ_PAYLOAD_TYPE {
    int64_t timestamp = 0;
    uint8_t channel = 0;
    /// Sized by the caller before a Read: that is how many bytes are asked for.
    Sequence<uint8_t> payload;
};
struct WRITE_PAYLOAD_TYPE {
    uint8_t channel = 0;
    Sequence<uint8_t> payload;
};
using IO_Service = IO_Service_Interface<READ_PAYLOAD_TYPE, WRITE_PAYLOAD_TYPE>;
}  // namespace Serial

namespace Devmem {
struct READ_PAYLOAD_TYPE {
    int64_t timestamp = 0;
    uint32_t offset = 0;  // bytes into the region
    uint8_t width = 0;    // bits: 8, 16, 32 or 64
    uint64_t data = 0;
};
struct WRITE_PAYLOAD_TYPE {
    uint32_t offset = 0;
    uint8_t width = 0;
    uint64_t data = 0;
};
using IO_Service = IO_Service_Interface<READ_PAYLOAD_TYPE, WRITE_PAYLOAD_TYPE>;
}  // namespace Devmem

namespace MCSQ {
struct READ_PAYLOAD_TYPE {
    int64_t timestamp = 0;
    Sequence<uint8_t> payload;
};
struct WRITE_PAYLOAD_TYPE {
    Sequence<uint8_t> payload;
};
using IO_Callback = IOSS::IO_Callback;
using IO_Service = IO_Service_Interface<READ_PAYLOAD_TYPE, WRITE_PAYLOAD_TYPE>;
}  // namespace MCSQ

}  // namespace FACE::IOSS
