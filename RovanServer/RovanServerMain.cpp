// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/RovanServerMain.h"

#include <signal.h>

#include <chrono>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string>

#include "RovanServer/RovanServer.h"
#include "utility/Console.h"
#include "utility/ExitWatch.h"
#include "utility/Sleep.h"

using FACE::RETURN_CODE_TYPE;
using FACE::Return_Code_Value_No_Error_No_Action;
using FACE::LCM::Keldra::RequestedState;

std::atomic<bool> exitFlag{false};
std::atomic<int> exitSignal{0};
int exitPollMs = 500;
int transactionPollMs = 200;

namespace {

constexpr std::chrono::seconds kCloseLimit{10};

}  // namespace

static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free,
              "the signal handler may only touch lock-free atomics");

void SignalHandler(int signal) {
    exitSignal = signal;
    exitFlag = true;
}

void SetupSignalHandler() {
    struct sigaction action {};
    action.sa_handler = &SignalHandler;
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0;
    for (const int signal :
         {SIGQUIT, SIGILL, SIGABRT, SIGBUS, SIGTERM, SIGTRAP, SIGSYS, SIGFPE, SIGINT}) {
        sigaction(signal, &action, nullptr);
    }
}

void callOnceTransactionally(std::function<void(RETURN_CODE_TYPE::Value&)> call,
                             RETURN_CODE_TYPE::Value& rc) {
    rc = RETURN_CODE_TYPE::IN_PROGRESS;
    call(rc);
    while (rc == RETURN_CODE_TYPE::IN_PROGRESS) {
        Utility::sleepFor(std::chrono::milliseconds(transactionPollMs));
        call(rc);
    }
}

int RovanServerMain(int argc, char** argv) {
    if (argc != 2) {
        Console::line(std::string("Usage: ") + argv[0] + " <top-level-config-file> ");
        return 1;
    }
    const FACE::String configFile(argv[1]);
    std::once_flag lastLinePrinted;
    const auto printLastLine = [&] {
        std::call_once(lastLinePrinted, [&] {
            Console::line(std::string("!!!!!! ") + argv[0] +
                          " has exited. Signal: " + std::to_string(exitSignal));
        });
    };
    std::optional<Utility::ExitWatch> closing;  // outlives the server, which closes the transport
    RovanServer server;
    RETURN_CODE_TYPE::Value rc = RETURN_CODE_TYPE::NO_ERROR;

    callOnceTransactionally([&](auto& code) { server.Initialize(code); }, rc);
    Return_Code_Value_No_Error_No_Action(__FILE__, __LINE__, "Initialize() failed", rc);

    server.Configure(configFile, rc);
    Return_Code_Value_No_Error_No_Action(__FILE__, __LINE__, "Configure() failed", rc);

    callOnceTransactionally([&](auto& code) { server.Framework_Connect(configFile, code); }, rc);
    Return_Code_Value_No_Error_No_Action(__FILE__, __LINE__, "Framework_Connect() failed", rc);

    callOnceTransactionally(
        [&](auto& code) { server.Request_State_Transition(RequestedState::START, code); }, rc);
    Return_Code_Value_No_Error_No_Action(__FILE__, __LINE__,
                                         "Request_State_Transition(START) failed", rc);

    // Only a server that runs stops in an orderly way: until here a signal has its default effect.
    SetupSignalHandler();
    while (!exitFlag) {
        Utility::sleepFor(std::chrono::milliseconds(exitPollMs));
    }

    callOnceTransactionally(
        [&](auto& code) { server.Request_State_Transition(RequestedState::STOP, code); }, rc);
    Return_Code_Value_No_Error_No_Action(__FILE__, __LINE__,
                                         "Request_State_Transition(STOP) failed", rc);

    // The bus library can hang for ever when the other end of a TCP connection dies at this moment.
    closing.emplace(kCloseLimit, [&] {
        Console::errorLine("The transport has not closed after " +
                           std::to_string(kCloseLimit.count()) + " s, leaving without it");
        printLastLine();
        std::_Exit(0);
    });
    callOnceTransactionally([&](auto& code) { server.Framework_Disconnect(code); }, rc);
    Return_Code_Value_No_Error_No_Action(__FILE__, __LINE__, "Framework_Disconnect() failed", rc);

    callOnceTransactionally([&](auto& code) { server.Finalize(code); }, rc);
    Return_Code_Value_No_Error_No_Action(__FILE__, __LINE__, "Finalize() failed", rc);

    printLastLine();
    return 0;
}
