// SPDX-License-Identifier: Apache-2.0
#include "gssip/GssipFrame.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

// The inserting check takes whatever a frame can sensibly hold; the verifying check only what the
// short messages of the receiver need.
constexpr unsigned kMaxWordsInserting = 32500;
constexpr unsigned kMaxWordsVerifying = 106;

constexpr unsigned kWordsPerDumpLine = 10;

uint16_t sumOf(const uint16_t* words, unsigned count) {
    unsigned sum = 0;
    for (unsigned i = 0; i < count; ++i) {
        sum += words[i];
    }
    return static_cast<uint16_t>(sum);
}

void appendWord(std::string& text, uint16_t word) {
    static const char kDigits[] = "0123456789ABCDEF";
    for (int shift = 12; shift >= 0; shift -= 4) {
        text += kDigits[(word >> shift) & 0xF];
    }
}

void appendDataLines(std::string& text, const uint16_t* data, unsigned wdcnt) {
    for (unsigned i = 0; i < wdcnt; ++i) {
        const unsigned column = i % kWordsPerDumpLine;
        if (column == 0) {
            char label[24];
            std::snprintf(label, sizeof label, "Data:%3u  ", i);
            text += label;
        }
        appendWord(text, data[i]);
        text += ' ';
        if (column == kWordsPerDumpLine / 2 - 1) {
            text += "| ";
        }
        if (column == kWordsPerDumpLine - 1 || i + 1 == wdcnt) {
            text += '\n';
        }
    }
}

}  // namespace

std::vector<uint16_t> Gssip::toWords(const void* bytes, unsigned count) {
    std::vector<uint16_t> words(std::max(kHeaderWords, (count + 1) / 2));
    std::memcpy(words.data(), bytes, count);
    words.resize(std::max<size_t>(words.size(), frameBytes(words[kWordCount]) / 2));
    return words;
}

uint16_t CalculateChecksum(const uint16_t* words, unsigned first, unsigned last) {
    if (first > last) {
        return 0;
    }
    return static_cast<uint16_t>(-sumOf(words + first, last - first + 1));
}

uint16_t MakeHdrSpecifyFlagWd(uint16_t* header, uint16_t msgId, uint16_t flagWord, uint16_t wdcnt) {
    header[Gssip::kWordDelimiter] = Gssip::kDelimiter;
    header[Gssip::kWordMsgId] = msgId;
    header[Gssip::kWordCount] = wdcnt;
    header[Gssip::kWordFlags] = flagWord;
    const uint16_t checksum = CalculateChecksum(header, Gssip::kWordDelimiter, Gssip::kWordFlags);
    header[Gssip::kWordHeaderChecksum] = checksum;
    return checksum;
}

uint16_t MakeHeader(uint16_t* header, uint16_t msgId, uint16_t wdcnt) {
    return MakeHdrSpecifyFlagWd(header, msgId, Gssip::kFlagFrameMarker, wdcnt);
}

uint16_t MakeACK(uint16_t* header, uint16_t msgId) {
    return MakeHdrSpecifyFlagWd(header, msgId, Gssip::kFlagsAckAnswer, 0);
}

uint16_t MakeNAK(uint16_t* header, uint16_t msgId) {
    return MakeHdrSpecifyFlagWd(header, msgId, Gssip::kFlagsNakAnswer, 0);
}

bool OkChecksumGPSmessage(uint16_t* frame) {
    const unsigned msgId = frame[Gssip::kWordMsgId];
    const unsigned wdcnt = frame[Gssip::kWordCount];
    const uint16_t headerChecksum =
        CalculateChecksum(frame, Gssip::kWordDelimiter, Gssip::kWordFlags);
    frame[Gssip::kWordHeaderChecksum] = headerChecksum;
    if (wdcnt == 0) {
        return true;
    }
    if (wdcnt > kMaxWordsInserting) {
        std::fprintf(stderr, "Bad wdcnt (%u) checksumming Msg(%u) \n", wdcnt, msgId);
        return false;
    }
    if (frame[Gssip::kWordDelimiter] != Gssip::kDelimiter) {
        std::fprintf(stderr,
                     "No delsoh checksumming Msg(%u) delsoh:%04X cnt:%5u flag:%04X  hck:%04X\n",
                     msgId, unsigned{frame[Gssip::kWordDelimiter]}, wdcnt,
                     unsigned{frame[Gssip::kWordFlags]}, unsigned{headerChecksum});
        return false;
    }
    frame[Gssip::kWordData + wdcnt] =
        CalculateChecksum(frame, Gssip::kWordData, Gssip::kWordData + wdcnt - 1);
    return true;
}

bool ChecksumsAreOkInGPSmessage(const uint16_t* frame) {
    const unsigned msgId = frame[Gssip::kWordMsgId];
    const unsigned wdcnt = frame[Gssip::kWordCount];
    const unsigned headerSum = sumOf(frame, Gssip::kHeaderWords);
    if (headerSum != 0) {
        std::fprintf(stderr, "Bad header chksum (%u) verifying checksums Msg(%u) \n", headerSum,
                     msgId);
        return false;
    }
    if (wdcnt == 0) {
        return true;
    }
    if (wdcnt > kMaxWordsVerifying) {
        std::fprintf(stderr, "Bad wdcnt (%u) verifying checksums Msg(%u) \n", wdcnt, msgId);
        return false;
    }
    const unsigned dataSum = sumOf(frame + Gssip::kWordData, wdcnt + 1);
    if (dataSum != 0) {
        std::fprintf(stderr, "Bad data chksum (%u) verifying checksums Msg(%u) \n", dataSum, msgId);
        return false;
    }
    return true;
}

void PrintMessageInHex(const uint16_t* frame, const char* prefix) {
    const unsigned wdcnt = frame[Gssip::kWordCount];
    char header[96];
    std::snprintf(header, sizeof header, "Header:  %04X %04X %04X %04X %04X; msgId:%5u Wdcnt:%5u\n",
                  unsigned{frame[0]}, unsigned{frame[1]}, unsigned{frame[2]}, unsigned{frame[3]},
                  unsigned{frame[4]}, unsigned{frame[Gssip::kWordMsgId]}, wdcnt);
    std::string text = prefix;
    text += header;
    if (wdcnt != 0) {
        appendDataLines(text, frame + Gssip::kWordData, wdcnt);
        text += "DataCks:  ";
        appendWord(text, frame[Gssip::kWordData + wdcnt]);
        text += '\n';
    }
    // Written whole, so that dumps of the read and the write thread never interleave.
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}
