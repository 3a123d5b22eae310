// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/WatchControl.h"

#include <algorithm>
#include <utility>

#include "tools/bus/WatchCommands.h"

namespace Bus {
namespace {

constexpr size_t kPageLines = 10;
constexpr size_t kMaxInput = 200;
constexpr size_t kFarBack = 1'000'000;

}  // namespace

WatchControl::Action WatchControl::press(int key) {
    Action action;
    m_message.clear();
    if (key == kEscape && m_dialog != Dialog::kNone) {
        close(m_dialog == Dialog::kHelp ? "" : "nothing was sent");
        return action;
    }
    switch (m_dialog) {
        case Dialog::kNone:
            pressPage(key, action);
            break;
        case Dialog::kHelp:
            close("");
            break;
        case Dialog::kCommands:
            pressCommands(key);
            break;
        case Dialog::kText:
            pressText(key);
            break;
        case Dialog::kConfirm:
            pressConfirm(key, action);
            break;
        case Dialog::kWord:
            pressWord(key, action);
            break;
    }
    return action;
}

void WatchControl::limitScroll(size_t most) {
    m_scroll = std::min(m_scroll, most);
}

void WatchControl::pressPage(int key, Action& action) {
    switch (key) {
        case 'q':
            action.quits = true;
            break;
        case '?':
        case 'h':
            m_dialog = Dialog::kHelp;
            break;
        case 'c':
            m_dialog = Dialog::kCommands;
            break;
        case '1':
        case '2':
        case '3':
        case '4':
            m_page = static_cast<Page>(key - '1');
            break;
        case '\t':
            m_page = static_cast<Page>((static_cast<int>(m_page) + 1) % 4);
            break;
        case kUp:
            m_scroll += 1;
            break;
        case kDown:
            m_scroll -= std::min<size_t>(m_scroll, 1);
            break;
        case kPageUp:
            m_scroll += kPageLines;
            break;
        case kPageDown:
            m_scroll -= std::min(m_scroll, kPageLines);
            break;
        case kHome:
            m_scroll = kFarBack;
            break;
        case kEnd:
            m_scroll = 0;
            break;
        default:
            break;
    }
}

void WatchControl::pressCommands(int key) {
    const size_t other = WatchCommands::texts().size();
    switch (key) {
        case kUp:
            m_selected -= std::min<size_t>(m_selected, 1);
            break;
        case kDown:
            m_selected = std::min(m_selected + 1, other);
            break;
        case kPageUp:
        case kHome:
            m_selected = 0;
            break;
        case kPageDown:
        case kEnd:
            m_selected = other;
            break;
        case 'q':
        case 'c':
            close("nothing was sent");
            break;
        case kEnter:
            if (m_selected == other) {
                m_input.clear();
                m_dialog = Dialog::kText;
            } else {
                choose(WatchCommands::texts()[m_selected]);
            }
            break;
        default:
            break;
    }
}

void WatchControl::pressText(int key) {
    if (!type(key)) {
        return;
    }
    if (m_input.empty()) {
        close("nothing was sent");
    } else {
        choose(m_input);
    }
}

void WatchControl::pressConfirm(int key, Action& action) {
    // Nothing but a plain yes: Enter may be the rest of what chose the command.
    if (key == 'y' || key == 'Y') {
        send(action);
    } else {
        close("nothing was sent");
    }
}

void WatchControl::pressWord(int key, Action& action) {
    if (!type(key)) {
        return;
    }
    if (m_input == WatchCommands::wordFor(m_command)) {
        send(action);
    } else {
        close("that was not the word, nothing was sent");
    }
}

bool WatchControl::type(int key) {
    if (key == kEnter) {
        return true;
    }
    if (key == kBackspace) {
        m_input = m_input.substr(0, m_input.size() - std::min<size_t>(m_input.size(), 1));
    } else if (key >= ' ' && key <= '~' && m_input.size() < kMaxInput) {
        m_input += static_cast<char>(key);
    }
    return false;
}

void WatchControl::choose(std::string text) {
    m_command = std::move(text);
    m_input.clear();
    m_dialog = WatchCommands::wordFor(m_command).empty() ? Dialog::kConfirm : Dialog::kWord;
}

void WatchControl::close(const std::string& message) {
    m_dialog = Dialog::kNone;
    m_command.clear();
    m_input.clear();
    m_message = message;
}

void WatchControl::send(Action& action) {
    action.command = m_command;
    close("");
}

}  // namespace Bus
