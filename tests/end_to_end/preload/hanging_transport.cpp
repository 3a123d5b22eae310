// SPDX-License-Identifier: Apache-2.0
// Loaded ahead of the bus library: the step of its end that the environment names never returns.
#include <dlfcn.h>
#include <fastrtps/Domain.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace {

void reach(const char* step) {
    const char* const hangsIn = std::getenv("ROVAN_TEST_HANGS_IN");
    while (hangsIn != nullptr && std::strcmp(hangsIn, step) == 0) {
        pause();
    }
}

/// The library's own function of that name.
template <typename Function>
Function* libraryFunction(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

namespace eprosima::fastrtps {

bool Domain::removeSubscriber(Subscriber* subscriber) {
    reach("removeSubscriber");
    return libraryFunction<bool(Subscriber*)>(
        "_ZN8eprosima8fastrtps6Domain16removeSubscriberEPNS0_10SubscriberE")(subscriber);
}

bool Domain::removeParticipant(Participant* participant) {
    reach("removeParticipant");
    return libraryFunction<bool(Participant*)>(
        "_ZN8eprosima8fastrtps6Domain17removeParticipantEPNS0_11ParticipantE")(participant);
}

}  // namespace eprosima::fastrtps
