// SPDX-License-Identifier: Apache-2.0
// The processor's connections on the bus. All of a step is done before any of it is checked, and
// the checks stop at the first failure. The maintenance connection is the odd one out: it is made
// but never sends, so nothing hangs on its creation, and it has no sender to register or remove.
#include "RovanServer/RovanProcessor.h"

std::array<PublicationBase*, RovanProcessor::kPublications> RovanProcessor::inConnectionOrder() {
    return {&m_utcDownlink, &m_pv,       &m_rcvrStatus,      &m_chanStatus,     &m_gpsTime,
            &m_utcTime,     &m_challEnv, &m_gpsCryptoStatus, &m_gpsLineOfSight, &m_maintenanceLog,
            &m_svStatus};
}

void RovanProcessor::Framework_Connect() {
    if (!m_tss) {
        return;
    }
    const auto publications = inConnectionOrder();
    std::array<Code, kPublications> codes;
    codes.fill(Code::NOT_AVAILABLE);
    const auto require = [&](int line, const PublicationBase* unchecked) {
        for (size_t i = 0; i < kPublications; ++i) {
            if (publications[i] != unchecked) {
                FACE::Return_Code_Value_No_Error(__FILE__, line, publications[i]->label(),
                                                 codes[i]);
            }
        }
    };

    for (size_t i = 0; i < kPublications; ++i) {
        publications[i]->createConnection(*m_tss, codes[i]);
    }
    require(__LINE__, &m_maintenanceLog);
    for (PublicationBase* publication : publications) {
        publication->createTypedTransport();
    }
    for (size_t i = 0; i < kPublications; ++i) {
        publications[i]->setReference(m_tss, codes[i]);
    }
    require(__LINE__, &m_maintenanceLog);
    for (size_t i = 0; i < kPublications; ++i) {
        if (publications[i] != &m_maintenanceLog) {
            publications[i]->registerSender(codes[i]);
        }
    }
    require(__LINE__, nullptr);
}

void RovanProcessor::Framework_Disconnect() {
    if (!m_tss) {
        return;
    }
    const auto publications = inConnectionOrder();
    for (PublicationBase* publication : publications) {
        if (publication != &m_maintenanceLog) {
            publication->unregisterSender(*m_tss);
        }
    }
    for (PublicationBase* publication : publications) {
        if (publication != &m_maintenanceLog) {
            publication->destroyConnection(*m_tss);
        }
    }
}
