// SPDX-License-Identifier: Apache-2.0
#include "PCSMaintReporter/MaintenanceSources.h"

namespace ASPN2::Maintenance {

using namespace LRU;
using namespace Component;

DefaultSources defaultSourcesOf(unsigned char serverId) {
    switch (serverId) {
        case 1:
        case 32:
        case 37:
        case 40:
        case 51:
        case 53:
        case 54:
            return {1, {{{eLru1, eCmpo0}}}};
        case 33:
        case 34:
            return {1, {{{eLru1, eCmpo5}}}};
        case 35:
            return {1, {{{eLru1, eCmpo9}}}};
        case 36:
            return {1, {{{eLru1, eCmpo10}}}};
        case 38:
            return {1, {{{eLru1, eCmpo3}}}};
        case 39:
        case 50:
        case 80:
            return {4, {{{eLru1, eCmpo4}, {eLru2, eCmpo14}, {eLru2, eCmpo16}}}};
        case 41:
        case 42:
            return {16, {{{eLru3, eCmpo16}, {eLru3, eCmpo17}, {eLru1, eCmpo17}, {eLru1, eCmpo1}}}};
        case 44:
        case 45:
        case 46:
        case 52:
        case 125:
            return {1, {{{eLru1, eCmpo8}}}};
        case 47:
            return {14, {{{eLru2, eCmpo15}, {eLru2, eCmpo14}, {eLru2, eCmpo13}, {eLru2, eCmpo16}}}};
        case 48:
            return {1, {{{eLru1, eCmpo6}}}};
        case 49:
            return {1, {{{eLru1, eCmpo2}}}};
        case 96:
        case 97:
            return {0, {{{eLru1, eCmpo1}}}};
        default:
            return {};
    }
}

}  // namespace ASPN2::Maintenance
