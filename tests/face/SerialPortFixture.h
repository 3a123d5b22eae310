// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "face/KD_SerialPort.h"
#include "tests/face/FakeConfiguration.h"

// A serial service over the calls CALLS whose configuration knows one connection, "Rovan": device 3
// at 115200, 8 data bits, 1 stop bit, no parity, no flow control.
template <typename CALLS>
class SerialPortFixture : public testing::Test {
  protected:
    using RC = FACE::RETURN_CODE_TYPE;
    using Code = RC::Value;
    using Parameters = FACE::IOSS::IO_PARAMETER_TRANSACTION_TYPE;

    SerialPortFixture() {
        configuration->containers["Rovan"] = {
            {"ChannelNum", "3"}, {"SerialMode", "0"}, {"Baudrate", "115200"}, {"DataBits", "8"},
            {"StopBits", "1"},   {"Parity", "0"},     {"FlowControl", "0"}};
        Code rc = RC::NO_ACTION;
        port->Set_Reference("", configuration, 0, rc);
        EXPECT_EQ(rc, RC::NO_ERROR);
        port->Initialize("io.xml", rc);
        EXPECT_EQ(rc, RC::NO_ERROR);
        configuration->trace.clear();
    }

    std::string& key(const std::string& name) { return configuration->containers["Rovan"][name]; }

    Code open() {
        Code rc = RC::NO_ACTION;
        port->Open_Connection("Rovan", -1, id, rc);
        return rc;
    }

    Code close() {
        Code rc = RC::NO_ACTION;
        port->Close_Connection(id, rc);
        return rc;
    }

    /// What the function prints on standard output.
    template <typename FUNCTION>
    static std::string printedBy(FUNCTION function) {
        testing::internal::CaptureStdout();
        function();
        return testing::internal::GetCapturedStdout();
    }

    uint32_t state() {
        FACE::IOSS::CONNECTION_STATUS_TYPE status;
        Code rc = RC::NO_ACTION;
        port->Get_Connection_Status(id, status, rc);
        EXPECT_EQ(rc, RC::NO_ERROR);
        return status.state;
    }

    Code read(long long timeout, uint32_t size) {
        EXPECT_EQ(input.payload.resize(size), FACE::Sequence<uint8_t>::NO_ERROR);
        Code rc = RC::INVALID_CONFIG;
        port->Read(id, timeout, input, rc);
        return rc;
    }
    std::vector<uint8_t> bytesRead() const {
        return {input.payload.buffer(), input.payload.buffer() + input.payload.length()};
    }

    Code write(const std::vector<uint8_t>& bytes) {
        FACE::IOSS::Serial::WRITE_PAYLOAD_TYPE output;
        for (const uint8_t byte : bytes) {
            output.payload.append(byte);
        }
        Code rc = RC::INVALID_CONFIG;
        port->Write(id, -1, output, rc);
        return rc;
    }

    Code configure(Parameters parameters) {
        Code rc = RC::INVALID_CONFIG;
        port->Configure_Bus_Parameters(id, -1, parameters, rc);
        return rc;
    }

    // Declared in this order: the service closes its connections through the calls.
    CALLS calls;
    std::shared_ptr<FakeConfiguration> configuration = std::make_shared<FakeConfiguration>();
    std::unique_ptr<FACE::IOSS::KD_SerialPort> port =
        std::make_unique<FACE::IOSS::KD_SerialPort>(calls);
    long long id = -1;
    FACE::IOSS::Serial::READ_PAYLOAD_TYPE input;
};

inline FACE::IOSS::IO_PARAMETER_TYPE baudParameter(int32_t baudrate) {
    FACE::IOSS::IO_PARAMETER_TYPE parameter;
    parameter.id = 2;
    parameter.value.long_value(baudrate);
    return parameter;
}

inline FACE::IOSS::IO_PARAMETER_TYPE parityParameter(uint16_t parity) {
    FACE::IOSS::IO_PARAMETER_TYPE parameter;
    parameter.id = 5;
    parameter.value.ushort_value(parity);
    return parameter;
}

inline FACE::IOSS::IO_PARAMETER_TRANSACTION_TYPE transactionOf(
    const std::vector<FACE::IOSS::IO_PARAMETER_TYPE>& parameters) {
    FACE::IOSS::IO_PARAMETER_TRANSACTION_TYPE transaction;
    for (const FACE::IOSS::IO_PARAMETER_TYPE& parameter : parameters) {
        transaction.parameters.append(parameter);
    }
    return transaction;
}
