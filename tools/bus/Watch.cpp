// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include <algorithm>
#include <chrono>

#include "tools/bus/Commands.h"
#include "tools/bus/Limit.h"
#include "tools/bus/Session.h"
#include "tools/bus/WatchScreen.h"
#include "tools/bus/WatchSender.h"
#include "tools/bus/WatchTerminal.h"
#include "tools/common/Output.h"

namespace Bus {
namespace {

using Clock = Limit::Clock;

// As often as the eye follows.
constexpr std::chrono::milliseconds kFrame{100};

int64_t unixNow() {
    return std::chrono::nanoseconds(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::vector<std::string> namesOf(const std::vector<Topic>& topics) {
    std::vector<std::string> names;
    for (const Topic& topic : topics) {
        names.push_back(topic.name);
    }
    return names;
}

bool hears(const Options& options, const char* topic) {
    const auto& topics = options.topics;
    return topics.empty() || std::find(topics.begin(), topics.end(), topic) != topics.end();
}

class Watch {
  public:
    explicit Watch(const Options& options)
        : m_options(options),
          m_file(options.connections),
          m_session(options),
          m_model(options.topics.empty() ? namesOf(m_file.topics()) : options.topics),
          m_sender(m_session, m_file, hears(options, "Command")) {}

    ExitStatus runOnce() {
        Options waiting = m_options;
        if (waiting.durationSeconds <= 0) {
            waiting.durationSeconds = m_file.discoverySeconds() + 2;
        }
        Limit limit(waiting);
        Sample sample;
        while (!limit.reached()) {
            if (m_session.next(sample, limit.patience())) {
                limit.count();
                m_model.take(sample);
            }
        }
        Tools::Output output;
        output.write(screen(m_options.watch.width, m_options.watch.height).text());
        output.flush();
        return limit.status();
    }

    ExitStatus run() {
        Limit limit(m_options);
        bool quits = false;
        {
            WatchTerminal terminal;
            while (!quits && !limit.reached() && terminal.good()) {
                takeSamples(limit);
                while (const auto line = terminal.errorLine()) {
                    m_model.note("ERR", *line, unixNow(), true);
                }
                m_sender.poll(m_model, unixNow());
                m_control.limitScroll(m_model.log().empty() ? 0 : m_model.log().size() - 1);
                terminal.show(screen(terminal.width(), terminal.height()));
                const auto nextFrame = Clock::now() + kFrame;
                // Several keys at once are answered with one frame.
                auto wait = kFrame;
                while (const auto key = terminal.key(wait)) {
                    quits = press(*key) || quits;
                    wait = std::chrono::milliseconds(0);
                    if (quits || Clock::now() >= nextFrame) {
                        break;
                    }
                }
            }
        }
        m_session.report(m_options.summary);
        return quits ? kOk : limit.status();
    }

  private:
    // What waits, but not for ever: a stream that is faster than the view must not stop it.
    void takeSamples(Limit& limit) {
        const auto end = Clock::now() + kFrame;
        Sample sample;
        while (Clock::now() < end && m_session.next(sample, std::chrono::nanoseconds::zero())) {
            limit.count();
            m_model.take(sample);
        }
    }

    bool press(int key) {
        const WatchControl::Action action = m_control.press(key);
        if (!action.command.empty()) {
            m_sender.send(action.command, m_model, unixNow());
        }
        return action.quits;
    }

    Canvas screen(int width, int height) const {
        const auto& settings = m_file.settings();
        WatchMoment moment;
        moment.now = Clock::now();
        moment.unixNs = unixNow();
        moment.bus = fmt::format("{}, domain {}", settings.useTransport, settings.domainId);
        moment.losses = m_session.dropped();
        return watchScreen(m_model, m_control, moment, width, height);
    }

    const Options& m_options;
    const ConnectionsFile m_file;
    Session m_session;
    WatchModel m_model;
    WatchControl m_control;
    WatchSender m_sender;
};

}  // namespace

ExitStatus watch(const Options& options) {
    if (!options.watch.once) {
        WatchTerminal::require();
    }
    Watch view(options);
    return options.watch.once ? view.runOnce() : view.run();
}

}  // namespace Bus
