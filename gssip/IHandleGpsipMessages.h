// SPDX-License-Identifier: Apache-2.0
#pragma once

// What GssipParser reports to. Both calls come synchronously on the thread that feeds the parser
// and pass back the cookie given with the handler.
class IHandleGpsipMessages {
  public:
    virtual ~IHandleGpsipMessages() = default;

    /// A frame whose checksums hold, `length` bytes long; `message` is valid during the call only.
    virtual void OnGpsMessageReceived(unsigned char* message, unsigned int length,
                                      unsigned int cookie) = 0;

    /// A candidate whose header or data checksum failed.
    virtual void OnParserChecksumError(unsigned int cookie) = 0;
};
