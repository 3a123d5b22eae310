// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "face/KD_TSS.h"

namespace Bus {

// What a person can put right: a wrong argument, a file that says the wrong thing, a bus that
// cannot be joined. The text is for standard error.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// A connection of the file. Its name is the topic on the bus.
struct Topic {
    std::string name;
    std::string typeName;    // on the bus
    std::string pubSubType;  // the class that encodes it
};

// The connections file of a server: how its bus is carried and which topics it has. Read once,
// through the server's own configuration service, so that the two understand the same.
class ConnectionsFile {
  public:
    using Settings = FACE::TSS::KD_TSS::Settings_t;

    /// Throws UsageError when the file is missing, is no configuration or lacks a transport key.
    explicit ConnectionsFile(const std::string& path);

    const std::string& path() const { return m_path; }
    const Settings& settings() const { return m_settings; }
    /// In the order of the file.
    const std::vector<Topic>& topics() const { return m_topics; }
    /// Null for a name that is not in the file.
    const Topic* find(const std::string& name) const;
    /// Throws UsageError for a name that is not in the file, and says which are.
    const Topic& get(const std::string& name) const;

    /// The settings of a participant that meets the server. On TCP that is the other end: the
    /// client of a server that listens; and with `listen`, the one that a connecting server looks
    /// for.
    Settings counterpart(bool listen) const;

    /// How long it usually takes until everybody on this bus has heard of everybody.
    double discoverySeconds() const;

  private:
    const std::string m_path;
    Settings m_settings;
    std::vector<Topic> m_topics;
};

}  // namespace Bus
