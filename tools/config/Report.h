// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "tools/common/Output.h"
#include "tools/config/Check.h"

namespace Config {

/// A finding as one ended line for the eye: file, line, severity, container and key, what is wrong,
/// what stands there and what is expected.
std::string textLine(const Finding& finding, const Tools::Output& output);

/// The same as one ended line of JSON; what does not apply is null.
std::string jsonLine(const Finding& finding);

/// How the check ended, in one ended line.
std::string summary(const CheckResult& result, const std::string& directory,
                    const Tools::Output& output);

}  // namespace Config
