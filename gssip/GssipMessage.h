// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

class IWriteByteStreams;

// Base of every typed receiver message. It owns no storage: a derived class embeds one contiguous
// block of header, data and data checksum words and attaches it in its constructor. A bare base
// object has no frame, and every operation on it does nothing. Objects belong to one thread at a
// time; a message that was queued for sending is not changed any more.
class GssipMessage {
  public:
    GssipMessage() = default;
    virtual ~GssipMessage() = default;

    /// Loads a received frame of `size` bytes in all. False, changing nothing, unless size / 2 - 6
    /// (truncating, signed) equals this message's word count.
    virtual bool OkSetContent(const void* bytes, unsigned size);

    /// Called just before the bytes go out; most messages print nothing.
    virtual void debugPrintMessage() const {}

    /// Checksum of the data words; 0 without data.
    uint16_t checksumOfContents() const;
    /// Checksum of header words 0 to 3, as it belongs into word 4.
    uint16_t calculateHeaderChecksum() const;
    /// Checksum of header words 0 to 4: 0 for a correct header.
    uint16_t checksumOfHeader() const;

    /// Writes both checksums into the frame, unless header word 2 and the word count differ.
    void insert_checksum();
    /// Writes word 4 only; does not count as an inserted checksum.
    void setHeaderChecksum();
    /// Stores `count` in header word 2 and in the message's own copy.
    void set_gpsip_wdcnt(uint16_t count);
    /// Zeroes the data words.
    void clearContents();

    /// Inserts the checksums and writes the frame to `stream`; writes nothing when they could not
    /// be inserted. Writing the same message again gives the same bytes.
    void WriteMessage(IWriteByteStreams* stream);

    uint16_t msgId() const { return m_msgId; }
    uint32_t wdcnt() const { return m_wdcnt; }
    /// The frame's flag word (header word 3); 0 without a frame.
    uint16_t flagWord() const;
    /// The frame's first word and first data word; null when there is none.
    const uint16_t* frame() const { return m_frame; }
    const uint16_t* data() const { return m_data; }
    bool isHeaderChecksumInserted() const { return m_headerChecksumInserted; }
    bool isDataChecksumInserted() const { return m_dataChecksumInserted; }

  protected:
    // Copying would leave the pointers on the other object's block.
    GssipMessage(const GssipMessage&) = delete;
    GssipMessage& operator=(const GssipMessage&) = delete;

    /// Points the base at the derived object's block. `capacityBytes` is the block's size: a frame
    /// that OkSetContent takes is clipped to it.
    void attach(uint16_t* frame, uint16_t* data, uint16_t msgId, uint32_t wdcnt,
                unsigned capacityBytes);

    uint16_t* m_frame = nullptr;
    uint16_t* m_data = nullptr;
    uint32_t m_wdcnt = 0;
    uint16_t m_msgId = 0;
    bool m_headerChecksumInserted = false;
    bool m_dataChecksumInserted = false;

  private:
    /// False too when set_gpsip_wdcnt() was given more words than the block holds: such a frame is
    /// neither summed nor written.
    bool frameFits() const;
    /// The data words that exist: `wdcnt`, never reaching behind the block.
    uint32_t dataWordsHeld() const;

    unsigned m_capacityBytes = 0;
};
