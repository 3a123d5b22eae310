// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fastrtps/attributes/ParticipantAttributes.h>
#include <fastrtps/attributes/PublisherAttributes.h>
#include <fastrtps/attributes/SubscriberAttributes.h>

#include <string>
#include <vector>

#include "face/KD_TSS.h"

// From the transport's settings to the attributes of the bus library. What is not set here keeps
// the library's default. The quality of service is a property of the process: all topics share it.
namespace FACE::TSS::Attributes {

/// What the settings may name as the transport.
std::vector<std::string> transportNames();

/// With exactly one transport, or none when the settings name an unknown one.
eprosima::fastrtps::ParticipantAttributes participant(const KD_TSS::Settings_t& settings,
                                                      const std::string& name);

// The writer always keeps its history for late joiners; a reader asks for it only when the settings
// want back-fill.
eprosima::fastrtps::PublisherAttributes publisher(const KD_TSS::Settings_t& settings,
                                                  const KD_TSS::Connection_t& connection);
eprosima::fastrtps::SubscriberAttributes subscriber(const KD_TSS::Settings_t& settings,
                                                    const KD_TSS::Connection_t& connection);

}  // namespace FACE::TSS::Attributes
