// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Errors.h"
#include "Text.h"
#include "shell/Completion.h"
#include "shell/LineReader.h"

#include <histedit.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cwchar>

namespace pavoctl {
namespace {

constexpr wchar_t interruptKey = 3;  // Ctrl-C
constexpr int historyLinesMax = 1000;

class EditedLines : public LineReader {
 public:
  EditedLines(Surroundings around, std::string promptText)
      : surroundings(std::move(around)),
        prompt(std::move(promptText)),
        history(history_init(), history_end),
        editor((std::setlocale(LC_CTYPE, ""), el_init("pavoctl", stdin, stderr, stderr)), el_end) {
    if (!history || !editor) {
      throw Failure("cannot set up the line editor");
    }
    HistEvent event;
    ::history(history.get(), &event, H_SETSIZE, historyLinesMax);
    ::history(history.get(), &event, H_SETUNIQUE, 1);
    EditLine* const el = editor.get();
    el_set(el, EL_CLIENTDATA, this);
    el_set(el, EL_PROMPT, onPrompt);
    el_set(el, EL_EDITOR, "emacs");
    el_set(el, EL_HIST, ::history, history.get());
    el_set(el, EL_GETCFN, onRead);
    // With narrow text, el_set would make copies of these texts and never free them.
    el_wset(el, EL_ADDFN, L"pavoctl-complete", L"Complete the word", onComplete);
    el_wset(el, EL_ADDFN, L"pavoctl-interrupt", L"Drop the line", onInterrupt);
    el_set(el, EL_BIND, "^I", "pavoctl-complete", nullptr);
    el_set(el, EL_BIND, "^C", "pavoctl-interrupt", nullptr);
    el_set(el, EL_BIND, "^R", "em-inc-search-prev", nullptr);
    // This reads the user's own settings from ~/.editrc.
    el_source(el, nullptr);
  }

  std::optional<std::string> next() override {
    // Otherwise the terminal itself would edit the text that the user types as soon as the prompt
    // appears.
    el_set(editor.get(), EL_PREP_TERM, 1);
    int count = 0;
    const char* typed = el_gets(editor.get(), &count);
    if (typed == nullptr || count <= 0) {
      std::fputc('\n', stderr);
      return std::nullopt;
    }
    std::string line(typed, static_cast<std::size_t>(count));
    if (line.back() == '\n') {
      line.pop_back();
    }
    if (!trimmed(line).empty()) {
      HistEvent event;
      ::history(history.get(), &event, H_ENTER, line.c_str());
    }
    return line;
  }

 private:
  static EditedLines& of(EditLine* el) {
    void* self = nullptr;
    el_get(el, EL_CLIENTDATA, &self);
    return *static_cast<EditedLines*>(self);
  }

  static char* onPrompt(EditLine* el) { return of(el).prompt.data(); }

  // Reads one character of the terminal. Returns 1, or 0 at the end of the input.
  static int onRead(EditLine* el, wchar_t* character) { return of(el).read(character); }

  int read(wchar_t* character) {
    std::mbstate_t state{};
    while (true) {
      switch (surroundings.waitForInput(leaveLine, [this] { returnToLine(); })) {
        case Waited::input:
          break;
        case Waited::interrupt:
          *character = interruptKey;
          return 1;
        case Waited::end:
          return 0;
      }
      char byte = 0;
      const ssize_t count = ::read(STDIN_FILENO, &byte, 1);
      if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
        continue;
      }
      if (count <= 0) {
        return 0;
      }
      const std::size_t length = std::mbrtowc(character, &byte, 1, &state);
      if (length <= 1) {
        return 1;
      }
      if (length == static_cast<std::size_t>(-1)) {
        // The bytes are no character in this locale and are dropped.
        state = {};
      }
    }
  }

  static void leaveLine() {
    std::fputs("\r\033[K", stderr);
    std::fflush(stderr);
  }
  void returnToLine() { el_set(editor.get(), EL_REFRESH); }

  static unsigned char onInterrupt(EditLine* el, int /*key*/) {
    const LineInfo* line = el_line(el);
    el_cursor(el, static_cast<int>(line->lastchar - line->cursor));
    line = el_line(el);
    el_deletestr(el, static_cast<int>(line->cursor - line->buffer));
    std::fputs("^C\n", stderr);
    return CC_REDISPLAY;
  }

  static unsigned char onComplete(EditLine* el, int /*key*/) { return of(el).complete(); }

  unsigned char complete() {
    const LineInfo* line = el_line(editor.get());
    const std::string soFar(line->buffer, static_cast<std::size_t>(line->cursor - line->buffer));
    const auto found = surroundings.complete(soFar);
    const std::string common = commonBeginning(found);
    const std::string typed = soFar.substr(soFar.find_last_of(" \t") + 1);
    // No word fits, or the typed part of the word holds quotes.
    if (found.empty() || common.rfind(typed, 0) != 0) {
      return CC_ERROR;
    }
    const std::string addition = common.substr(typed.size());
    if (!addition.empty() || found.size() == 1) {
      el_insertstr(editor.get(), (addition + (found.size() == 1 ? " " : "")).c_str());
      return CC_REFRESH;
    }
    std::fprintf(stderr, "\n%s\n", join(found, "  ").c_str());
    return CC_REDISPLAY;
  }

  const Surroundings surroundings;
  std::string prompt;
  const std::unique_ptr<History, decltype(&history_end)> history;
  const std::unique_ptr<EditLine, decltype(&el_end)> editor;
};

}  // namespace

std::unique_ptr<LineReader> editedLines(LineReader::Surroundings surroundings,
                                        const std::string& prompt) {
  return std::make_unique<EditedLines>(std::move(surroundings), prompt);
}

}  // namespace pavoctl
