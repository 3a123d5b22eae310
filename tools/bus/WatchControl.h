// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace Bus {

// What the keys do in the live view: which page is shown, how far the log is scrolled back, and
// the way from the list of commands over a confirmation to one that is sent. Knows no terminal.
class WatchControl {
  public:
    // Characters are keys themselves.
    enum Key { kEnter = 0x100, kEscape, kBackspace, kUp, kDown, kPageUp, kPageDown, kHome, kEnd };
    enum class Page { kOverview, kSatellites, kLink, kLog };
    enum class Dialog { kNone, kHelp, kCommands, kText, kConfirm, kWord };

    struct Action {
        bool quits = false;
        std::string command;  // to send; mostly empty
    };

    Action press(int key);

    Page page() const { return m_page; }
    Dialog dialog() const { return m_dialog; }
    /// Lines that the log is scrolled back from its end; the view takes what there is.
    size_t scroll() const { return m_scroll; }
    /// No more than that can be scrolled back.
    void limitScroll(size_t most);
    /// The chosen line of the list of commands; the one behind the last is for any other text.
    size_t selected() const { return m_selected; }
    /// The command that is about to be sent.
    const std::string& command() const { return m_command; }
    /// What was typed.
    const std::string& input() const { return m_input; }
    /// What became of the last dialog; until the next key.
    const std::string& message() const { return m_message; }

  private:
    void pressPage(int key, Action& action);
    void pressCommands(int key);
    void pressText(int key);
    void pressConfirm(int key, Action& action);
    void pressWord(int key, Action& action);
    /// Takes a key for the input line. True for Enter.
    bool type(int key);
    void choose(std::string text);
    void close(const std::string& message);
    void send(Action& action);

    Page m_page = Page::kOverview;
    Dialog m_dialog = Dialog::kNone;
    size_t m_scroll = 0;
    size_t m_selected = 0;
    std::string m_command;
    std::string m_input;
    std::string m_message;
};

}  // namespace Bus
