// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "aspn2_msgs/Records.h"

// The fields of every record of the bus, in the order of the wire, as the definitions of the types
// list them. Whatever shows, stores or fills a message is a visitor: Fields<T>::each(record, visit)
// calls visit(name, field) for each field, with the field as the record's getter gives it, so that
// a record that is not const can be filled.
namespace Bus {

namespace idl = aspn2_msgs::idl;

template <typename T>
struct Fields {
    static constexpr bool known = false;
};

/// True for the records, false for numbers, texts, arrays and sequences.
template <typename T>
constexpr bool isRecord = Fields<T>::known;

#define BUS_FIELD(name) visit(#name, record.name());
#define BUS_RECORD(type, fields)                          \
    template <>                                           \
    struct Fields<idl::type> {                            \
        static constexpr bool known = true;               \
        template <typename RECORD, typename VISIT>        \
        static void each(RECORD& record, VISIT&& visit) { \
            fields                                        \
        }                                                 \
    };
ASPN2_RECORDS(BUS_RECORD, BUS_FIELD)
#undef BUS_FIELD
#undef BUS_RECORD

}  // namespace Bus
