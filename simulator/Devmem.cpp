// SPDX-License-Identifier: Apache-2.0
#include "simulator/Devmem.h"

#include <unistd.h>

#include <fstream>
#include <stdexcept>
#include <utility>

#include "simulator/PrivateDev.h"

namespace Simulator {
namespace {

constexpr const char* kNotes = "calls";

std::string findBusybox() {
    for (const char* const path : {"/bin/busybox", "/usr/bin/busybox"}) {
        if (access(path, X_OK) == 0) {
            return path;
        }
    }
    throw std::runtime_error("busybox is needed for the devmem command");
}

}  // namespace

Devmem::Devmem(std::filesystem::path directory)
    : m_directory(std::move(directory)), m_busybox(findBusybox()) {
    PrivateDev::require(m_directory.string());
    std::filesystem::create_directories(m_directory);
    failWith(0);
}

Devmem::~Devmem() {
    std::error_code ignored;
    std::filesystem::remove_all(m_directory, ignored);
}

std::string Devmem::inFrontOf(const std::string& path) const {
    return path.empty() ? m_directory.string() : m_directory.string() + ':' + path;
}

std::vector<std::string> Devmem::calls() const {
    std::ifstream notes(m_directory / kNotes);
    std::vector<std::string> calls;
    for (std::string line; std::getline(notes, line);) {
        calls.push_back(line);
    }
    return calls;
}

void Devmem::failWith(int status) {
    write(status == 0 ? "exec " + m_busybox + " devmem \"$@\"" : "exit " + std::to_string(status));
}

void Devmem::write(const std::string& lastLine) const {
    // Renamed into place, so that a call at this moment finds the whole of the old or the new.
    const std::filesystem::path fresh = m_directory / "devmem.new";
    std::ofstream script(fresh);
    script << "#!/bin/sh\n"
           << "printf '%s\\n' \"$*\" >> '" << (m_directory / kNotes).string() << "'\n"
           << lastLine << '\n';
    script.close();
    if (!script) {
        throw std::runtime_error("cannot write " + fresh.string());
    }
    std::filesystem::permissions(fresh, std::filesystem::perms::owner_all);
    std::filesystem::rename(fresh, m_directory / "devmem");
}

}  // namespace Simulator
