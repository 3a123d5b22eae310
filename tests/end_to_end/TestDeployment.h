// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>

#include "tests/support/OwnBus.h"

// A copy of a shipped deployment in a temporary directory, on a bus of its own: its domain and its
// TCP port belong to no other test that runs at the same time. Keys can be changed before the
// server starts.
class TestDeployment {
  public:
    /// `variant` is a directory of config/: "udp", "shm", "tcp-server" or "tcp-client".
    explicit TestDeployment(const std::string& variant = "udp");
    TestDeployment(const TestDeployment&) = delete;
    TestDeployment& operator=(const TestDeployment&) = delete;
    ~TestDeployment();

    const std::filesystem::path& directory() const { return m_directory; }
    std::filesystem::path topLevelFile() const { return m_directory / m_variant / "rovan.xml"; }
    std::filesystem::path connectionsFile() const {
        return m_directory / m_variant / "connections.xml";
    }
    std::filesystem::path ioDevicesFile() const { return m_directory / "io_devices.xml"; }
    /// The connections file of another variant on the same bus: the other end of a TCP pair.
    std::filesystem::path connectionsFileOf(const std::string& variant);

    /// A copy of a connections file for somebody who also gets what was published before they and
    /// the publisher had found each other.
    std::filesystem::path backFilling(const std::filesystem::path& connectionsFile);

    /// Changes a key of the server's own container, of the system's, or of any container of a file.
    void setServer(const std::string& key, const std::string& value);
    void setSystem(const std::string& key, const std::string& value);
    void set(const std::filesystem::path& file, const std::string& container,
             const std::string& key, const std::string& value);
    void removeContainer(const std::filesystem::path& file, const std::string& container);

  private:
    void moveToOwnBus(const std::filesystem::path& connectionsFile);

    const std::string m_variant;
    std::filesystem::path m_directory;
    const test_support::OwnBus m_bus;
};

// A file without one of its keys, or without one of its containers, until the object's end.
class FileChanged {
  public:
    explicit FileChanged(std::filesystem::path file);
    FileChanged(const FileChanged&) = delete;
    FileChanged& operator=(const FileChanged&) = delete;
    ~FileChanged();

  private:
    const std::filesystem::path m_file;
    std::string m_original;
};

class KeyRemoved : public FileChanged {
  public:
    KeyRemoved(const std::filesystem::path& file, const std::string& container,
               const std::string& key);
};

class ContainerRemoved : public FileChanged {
  public:
    ContainerRemoved(const std::filesystem::path& file, const std::string& container);
};
