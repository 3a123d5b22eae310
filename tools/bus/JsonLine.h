// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "tools/bus/Bus.h"

namespace Bus {

/// A readable sample as one ended line of JSON: where it comes from, when, and every field.
std::string jsonLine(const Sample& sample);

}  // namespace Bus
