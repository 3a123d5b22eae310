// SPDX-License-Identifier: Apache-2.0
#include "ASPN/TimeCodeHelper.h"

namespace ASPN2 {

TimeCodeHelper& TimeCodeHelper::Instance() {
    static TimeCodeHelper instance;
    return instance;
}

}  // namespace ASPN2
