// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "face/FACE_Common.h"

// The life-cycle operations through which a main program drives its server.
namespace FACE::LCM {

namespace Initializable {
class InitializableInstance {
  public:
    virtual ~InitializableInstance() = default;
    virtual void Initialize(RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Finalize(RETURN_CODE_TYPE::Value& rc) = 0;
};
}  // namespace Initializable

namespace Configurable {
class ConfigurableInstance {
  public:
    virtual ~ConfigurableInstance() = default;
    virtual void Configure(const String& configFile, RETURN_CODE_TYPE::Value& rc) = 0;
};
}  // namespace Configurable

namespace Connectable {
class ConnectableInstance {
  public:
    virtual ~ConnectableInstance() = default;
    virtual void Framework_Connect(const String& configFile, RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Framework_Disconnect(RETURN_CODE_TYPE::Value& rc) = 0;
};
}  // namespace Connectable

namespace Keldra {

struct RequestedState {
    enum Value : uint32_t { START = 0, STOP = 1 };
};

struct ReportedState {
    enum Value : uint32_t { RUNNING = 0, STOPPED = 1 };
};

namespace RequestedState_ReportedState::Stateful {
class StatefulInstance {
  public:
    virtual ~StatefulInstance() = default;
    virtual void Query_State(ReportedState::Value& state, RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Request_State_Transition(RequestedState::Value requested,
                                          RETURN_CODE_TYPE::Value& rc) = 0;
};
}  // namespace RequestedState_ReportedState::Stateful

}  // namespace Keldra
}  // namespace FACE::LCM
