// SPDX-License-Identifier: Apache-2.0
#pragma once

// Where GssipMessage::WriteMessage puts its bytes.
class IWriteByteStreams {
  public:
    virtual ~IWriteByteStreams() = default;

    /// Writes `count` bytes; returns the bytes written, or -1 on failure.
    virtual int WriteBytes(const void* bytes, unsigned int count) = 0;
};
