// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <type_traits>

#include "face/FACE_IOSS.h"

namespace {

using Value = FACE::IOSS::IO_PARAMETER_VALUE_TYPE;

// One row for each alternative: its tag, its member's type and the three forms of its accessor.
template <typename T>
struct Alternative {
    int tag;
    void (Value::*set)(T);
    T& (Value::*reference)();
    void (Value::*get)(T&, Value::RETURN_CODE&) const;
};

template <typename FUNCTION>
void forEachAlternative(FUNCTION check) {
    check(Alternative<int16_t>{0, &Value::short_value, &Value::short_value, &Value::short_value});
    check(Alternative<int32_t>{1, &Value::long_value, &Value::long_value, &Value::long_value});
    check(Alternative<int64_t>{2, &Value::longlong_value, &Value::longlong_value,
                               &Value::longlong_value});
    check(
        Alternative<uint16_t>{3, &Value::ushort_value, &Value::ushort_value, &Value::ushort_value});
    check(Alternative<uint32_t>{4, &Value::ulong_value, &Value::ulong_value, &Value::ulong_value});
    check(Alternative<uint64_t>{5, &Value::ulonglong_value, &Value::ulonglong_value,
                                &Value::ulonglong_value});
    check(Alternative<float>{6, &Value::float_value, &Value::float_value, &Value::float_value});
    check(Alternative<double>{7, &Value::double_value, &Value::double_value, &Value::double_value});
    check(Alternative<long double>{8, &Value::longdouble_value, &Value::longdouble_value,
                                   &Value::longdouble_value});
    check(Alternative<int8_t>{9, &Value::char_value, &Value::char_value, &Value::char_value});
    check(
        Alternative<bool>{10, &Value::boolean_value, &Value::boolean_value, &Value::boolean_value});
    check(Alternative<uint8_t>{11, &Value::octet_value, &Value::octet_value, &Value::octet_value});
}

TEST(ParameterValue, IsAShortOfZeroWhenFresh) {
    const Value value;
    EXPECT_EQ(value.descriminator(), 0);
    EXPECT_EQ(sizeof(value.descriminator()), 4u);
    int16_t out = 7;
    auto rc = Value::BAD_DISCRIMINATOR;
    value.short_value(out, rc);
    EXPECT_EQ(rc, Value::NO_ERROR);
    EXPECT_EQ(out, 0);
}

TEST(ParameterValue, StoresEachAlternativeUnderItsTag) {
    int alternatives = 0;
    forEachAlternative([&alternatives](auto alternative) {
        using T = std::remove_reference_t<decltype((Value().*alternative.reference)())>;
        const T largest = std::numeric_limits<T>::max();
        Value value;
        (value.*alternative.set)(largest);
        EXPECT_EQ(value.descriminator(), alternative.tag);
        T out{};
        auto rc = Value::BAD_DISCRIMINATOR;
        (value.*alternative.get)(out, rc);
        EXPECT_EQ(rc, Value::NO_ERROR);
        EXPECT_EQ(out, largest);
        ++alternatives;
    });
    EXPECT_EQ(alternatives, 12);
}

TEST(ParameterValue, RefusesToReadAnyOtherAlternative) {
    int refusals = 0;
    forEachAlternative([&refusals](auto stored) {
        Value value;
        (value.*stored.set)(1);
        forEachAlternative([&](auto asked) {
            if (asked.tag == stored.tag) {
                return;
            }
            using T = std::remove_reference_t<decltype((Value().*asked.reference)())>;
            T out = 1;
            auto rc = Value::NO_ERROR;
            (value.*asked.get)(out, rc);
            EXPECT_EQ(rc, Value::BAD_DISCRIMINATOR);
            EXPECT_EQ(out, T{1});
            ++refusals;
        });
    });
    EXPECT_EQ(refusals, 12 * 11);
}

TEST(ParameterValue, IsRetaggedByAskingForAReference) {
    forEachAlternative([](auto alternative) {
        Value value;
        value.longlong_value(5);
        (value.*alternative.reference)() = 1;
        EXPECT_EQ(value.descriminator(), alternative.tag);
    });
    Value value;
    value.longlong_value(5);
    value.octet_value();
    EXPECT_EQ(value.descriminator(), 11);
}

TEST(ParameterValue, KeepsEachAlternativeApart) {
    Value value;
    value.ulong_value(0xFFFFFFFFu);
    EXPECT_EQ(value.ushort_value(), 0);
    EXPECT_EQ(value.ulong_value(), 0xFFFFFFFFu);
}

}  // namespace
