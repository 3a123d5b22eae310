// SPDX-License-Identifier: Apache-2.0
// 8040 and 5040: the state of the cryptographic keys, and the maintenance log of its changes. Both
// messages go out on one topic, with different key types.
#include <utility>

#include "ASPN/ServerIds.h"
#include "MSID_messages/Rovan_5040_Msg.h"
#include "MSID_messages/Rovan_8040_Msg.h"
#include "PCSMaintReporter/PCSMaintReporter.h"
#include "RovanServer/RovanProcessor.h"
#include "RovanServer/RovanProcessorFrame.h"

namespace {

namespace idl = aspn2_msgs::idl;
namespace Outcome = ASPN2::Maintenance::Outcome;

idl::key_type_set keySet(idl::key_type_enum type, unsigned remainingTime,
                         idl::key_status_enum status, idl::key_load_status_enum load,
                         idl::key_zeroization_status_enum zeroization) {
    idl::key_type_set set;
    set.key_type(type);
    set.remaining_key_time(static_cast<int32_t>(remainingTime));
    set.key_status(status);
    set.key_load_status(load);
    set.key_zeroization_status(zeroization);
    return set;
}

idl::key_status_enum statusOf(bool active) {
    return active ? idl::KEY_STATUS_2 : idl::KEY_STATUS_1;
}

idl::key_load_status_enum loadStatusOf(bool failed) {
    return failed ? idl::KEY_LOAD_STATUS_1 : idl::KEY_LOAD_STATUS_0;
}

idl::key_type_set keySet(idl::key_type_enum type, const key_word_8040_t& key) {
    return keySet(type, key.remainingTime(), statusOf(key.status()), loadStatusOf(key.loadStatus()),
                  static_cast<idl::key_zeroization_status_enum>(key.zeroizationStatus()));
}

// Types 3 and 4 do not occur.
std::vector<idl::key_type_set> keySetsOf(const unpacked_msg8040_t& report) {
    const further_keys_8040_t& further = report.furtherKeys;
    const auto furtherSet = [&](idl::key_type_enum type, unsigned key, unsigned remainingTime,
                                idl::key_status_enum status) {
        return keySet(type, remainingTime, status, loadStatusOf(further.loadStatus(key)),
                      idl::KEY_ZEROIZATION_STATUS_3);
    };
    return {keySet(idl::KEY_TYPE_0, report.keys[0]),
            keySet(idl::KEY_TYPE_1, report.keys[1]),
            keySet(idl::KEY_TYPE_2, report.keys[2]),
            furtherSet(idl::KEY_TYPE_5, 0, further.firstRemainingTime(),
                       statusOf(further.firstPresent())),
            furtherSet(idl::KEY_TYPE_6, 1, further.secondRemainingTime(),
                       statusOf(further.secondPresent())),
            furtherSet(idl::KEY_TYPE_7, 2, 0, idl::KEY_STATUS_5),
            furtherSet(idl::KEY_TYPE_8, 3, 0, idl::KEY_STATUS_5)};
}

void logKeyEvent(const char* text, Outcome::eOutcome outcome) {
    using namespace ASPN2::Maintenance;
    PCSMaintReporter::Instance().sendMaintenanceEvent(
        text, "Key Loader", Criticality::eCrit2, outcome, ASPN2::ServerIds::kRovan,
        Category::eCat12, LRU::eLru1, Component::eCmpo4, LRU::eLru0, Component::eCmpo0, LRU::eLru0,
        Component::eCmpo0, LRU::eLru0, Component::eCmpo0, 0);
}

}  // namespace

void RovanProcessor::process5040(const GSSIP& gssip) {
    const RovanProcessorFrame frame(gssip);
    Rovan_5040_Msg message;
    if (!message.ok_set_5040_gpsip(frame.bytes, frame.size)) {
        return;
    }
    message.unpack_5040();
    const unpacked_msg5040_t& report = message.unpacked();
    followCryptoState(report.cryptoState);
    m_opMode = report.operatingMode;
    publishKeys(gssip,
                {keySet(idl::KEY_TYPE_9, report.remainingKeyTime, m_keyStatus, m_keyLoadStatus,
                        m_keyZeroizationStatus)},
                ": process5040() GPSCryptoStatus PUBLISH ERROR");
}

// What a state does not speak of stays as it was.
void RovanProcessor::followCryptoState(unsigned state) {
    switch (state) {
        case 0:
        case 1:
        case 3:
            m_keyStatus = idl::KEY_STATUS_1;
            break;
        case 2:
            m_keyStatus = idl::KEY_STATUS_2;
            break;
        case 4:
            m_keyStatus = idl::KEY_STATUS_4;
            break;
        case 5:
            m_keyStatus = idl::KEY_STATUS_1;
            m_keyZeroizationStatus = idl::KEY_ZEROIZATION_STATUS_2;
            break;
        case 6:
            m_keyZeroizationStatus = idl::KEY_ZEROIZATION_STATUS_1;
            break;
        case 7:
            m_keyLoadStatus = idl::KEY_LOAD_STATUS_0;
            if (m_lastCryptoState != state) {
                logKeyEvent("New Key Loaded", Outcome::eOutcome2);
            }
            break;
        default:
            break;
    }
    m_lastCryptoState = state;
}

void RovanProcessor::process8040(const GSSIP& gssip) {
    const RovanProcessorFrame frame(gssip);
    Rovan_8040_Msg message;
    if (!message.ok_set_8040_gpsip(frame.bytes, frame.size) ||
        message.frame()[Gssip::kWordMsgId] != message.msgId()) {
        return;
    }
    message.unpack_8040();
    const unpacked_msg8040_t& report = message.unpacked();
    publishKeys(gssip, keySetsOf(report), ": process8040() GPSCryptoStatus PUBLISH ERROR");

    const further_keys_8040_t& further = report.furtherKeys;
    key_info_storage facts;
    facts.mKeyActive = report.keys[0].status();
    facts.cvdKeyActive = Gssip::bits(further.word, 0, 0) != 0;  // whatever the selector's other bit
    facts.mLoadOk = !report.keys[0].loadStatus();
    facts.bcvmLoadOk = !further.loadStatus(0);
    facts.bguv2LoadOk = !further.loadStatus(1);
    facts.bbkaupdLoadOk = !further.loadStatus(2);
    eventLog8040(facts);
}

void RovanProcessor::eventLog8040(const key_info_storage& facts) {
    struct Fact {
        bool key_info_storage::*value;
        const char* nowTrue;
        const char* nowFalse;
    };
    static constexpr Fact kFacts[] = {
        {&key_info_storage::mKeyActive, "M Key loaded and Active", "M Key Deactivated"},
        {&key_info_storage::cvdKeyActive, "CVD Key Loaded and Active", "CVD Key Deactivated"},
        {&key_info_storage::mLoadOk, "Last M Key load was a success", "Last M key load Failed"},
        {&key_info_storage::bcvmLoadOk, "Last BCVm Key load was a success",
         "Last BCVm key load Failed"},
        {&key_info_storage::bguv2LoadOk, "Last BGUV2 Key load was a success",
         "Last BGUV2 key load Failed"},
        {&key_info_storage::bbkaupdLoadOk, "Last BBKAUPD Key load was a success",
         "Last BBKAUPD key load Failed"},
    };
    for (const Fact& fact : kFacts) {
        const bool now = facts.*fact.value;
        if (now != m_keyInfo.*fact.value) {
            logKeyEvent(now ? fact.nowTrue : fact.nowFalse,
                        now ? Outcome::eOutcome2 : Outcome::eOutcome3);
        }
    }
    m_keyInfo = facts;
}

void RovanProcessor::publishKeys(const GSSIP& gssip, std::vector<idl::key_type_set> sets,
                                 const char* failureWords) {
    idl::GPSCryptoStatus message;
    message.num_key_types(static_cast<int32_t>(sets.size()));
    message.key_types(std::move(sets));
    m_gpsCryptoStatus.publish(gssip.header(), message, failureWords);
}
