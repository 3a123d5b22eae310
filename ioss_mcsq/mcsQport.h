// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

// One end of a queue device: a path and the descriptor opened on it, which this object owns.
// Nothing here ever waits for the other end. For one thread at a time.
class mcsQport {
  public:
    mcsQport() = default;
    mcsQport(const mcsQport&) = delete;
    mcsQport& operator=(const mcsQport&) = delete;
    virtual ~mcsQport();

    /// Opens the file in the port's own direction; a port that is open is closed first. What became
    /// of it is_file_open() tells, and a line on standard error when it failed.
    virtual void openPort() = 0;
    void closePort();

    void set_filename(const std::string& name);
    /// Empty when none was set.
    const char* get_filename() const { return m_fileName.c_str(); }
    bool hasSetFilename() const { return m_hasFileName; }
    bool is_file_open() const { return m_descriptor >= 0; }
    /// -1 for a port that is not open.
    int getFileDescriptor() const { return m_descriptor; }
    /// Above 0, the line about a file that cannot be opened gives the system's reason.
    void doDebug(int level) { m_debug = level; }

    /// 1 for a file that can be opened for writing; 0, with a line on standard error, for one that
    /// cannot; -1 without a name, so that a caller testing for truth goes on and the open fails.
    int can_open_file() const;

  protected:
    void openPortForRead();
    void openPortForWrite();

  private:
    int openOrReport(int flags, const char* direction) const;
    void reportUnableToOpen(const char* direction) const;

    std::string m_fileName;
    int m_descriptor = -1;
    bool m_hasFileName = false;
    int m_debug = 0;
};
