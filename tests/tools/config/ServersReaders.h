// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "face/KD_Config.h"
#include "face/KD_Devmem.h"
#include "face/KD_SerialPort.h"
#include "face/KD_TSS.h"
#include "ioss_mcsq/KD_MCSQ.h"
#include "tests/RovanServer/OpenServer.h"
#include "tests/face/SerialFakes.h"
#include "tests/platform/FakeMemoryDevice.h"
#include "tests/tools/config/Deployment.h"

namespace tools_config_test {

// What the server's readers make of a deployment.
class ServersReaders {
  public:
    using Code = FACE::RETURN_CODE_TYPE::Value;

    explicit ServersReaders(const Deployment& deployment) : m_deployment(deployment) {}

    Code topLevel() const {
        OpenServer server;
        Code rc = FACE::RETURN_CODE_TYPE::NO_ERROR;
        server.Configure(m_deployment.path("rovan.xml").c_str(), rc);
        return rc;
    }

    Code connection(const std::string& name) const {
        FACE::TSS::KD_TSS transport("Rovan");
        Code rc = FACE::RETURN_CODE_TYPE::NO_ERROR;
        transport.Set_Reference("", std::make_shared<FACE::KD_Config>(), 0, rc);
        transport.Initialize(m_deployment.path("connections.xml").c_str(), rc);
        if (rc == FACE::RETURN_CODE_TYPE::NO_ERROR && name != "FastRtps") {
            long long id = 0;
            int size = 0;
            transport.Create_Connection(name.c_str(), -1, id, size, rc);
        }
        return rc;
    }

    Code device(const std::string& name) const {
        if (name == "Rovan") {
            RecordingSerial calls;
            FACE::IOSS::KD_SerialPort service(calls);
            return open(service, name);
        }
        if (name == "ROVAN_KD" || name == "KD_ROVAN") {
            FACE::IOSS::KD_MCSQ service((m_deployment.directory() / "mcs").string());
            return open(service, name);
        }
        FakeMemoryDevice calls;
        FACE::IOSS::KD_Devmem service(calls);
        return open(service, name);
    }

    Code of(const Place& place) const {
        if (place.file == "rovan.xml") {
            return topLevel();
        }
        return place.file == "connections.xml" ? connection(place.container)
                                               : device(place.container);
    }

  private:
    template <typename SERVICE>
    Code open(SERVICE& service, const std::string& name) const {
        Code rc = FACE::RETURN_CODE_TYPE::NO_ERROR;
        service.Set_Reference("", std::make_shared<FACE::KD_Config>(), 0, rc);
        service.Initialize(m_deployment.path("io_devices.xml").c_str(), rc);
        if (rc == FACE::RETURN_CODE_TYPE::NO_ERROR) {
            long long id = 0;
            service.Open_Connection(name.c_str(), -1, id, rc);
        }
        return rc;
    }

    const Deployment& m_deployment;
};

}  // namespace tools_config_test
