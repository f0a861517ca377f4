// A box or dialog that is answered from the file that KV_ANSWERS names. A box that the file does not expect ends the
// process with exit code 3.
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <optional>

#include "platform/answers.h"
#include "platform/linux/box_labels.h"
#include "platform/linux/open_view.h"
#include "platform/linux/utf8.h"
#include "platform/text.h"

namespace {

constexpr int kFailedRun = 3;
constexpr std::size_t kMostBytes = std::size_t(1) << 20;  // of the file

// The file in use, and the next line of it.
struct Script {
  std::mutex lock;
  std::string path;
  BoxAnswers file;
  std::size_t next = 0;
};

Script& TheScript() {
  static auto* const script = new Script;  // boxes may come while static objects are destroyed
  return *script;
}

// Ends the process without destructors, because other threads may be running.
[[noreturn]] void FailRun(const std::string& path, const std::string& reason) {
  std::fflush(stdout);
  std::fprintf(stderr, "KV_ANSWERS: %s: %s\n", path.c_str(), reason.c_str());
  std::fflush(stderr);
  std::_Exit(kFailedRun);
}

BoxAnswers ReadAnswers(const std::string& path) {
  const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
  if (!file) FailRun(path, "the file cannot be read");
  std::string text;
  char block[4096];
  while (text.size() <= kMostBytes) {
    const std::size_t got = std::fread(block, 1, sizeof block, file.get());
    if (got == 0) break;
    text.append(block, got);
  }
  if (std::ferror(file.get())) FailRun(path, "the file cannot be read");
  if (text.size() > kMostBytes) FailRun(path, "the file is larger than 1 MiB");
  return ParseBoxAnswers(text);
}

// The answers to this box, from the next line of the file.
BoxAnswer Next(const std::string& path, const DialogState& state) {
  Script& script = TheScript();
  const std::lock_guard guard(script.lock);
  if (script.path != path) {
    script.path = path;
    script.file = ReadAnswers(path);
    script.next = 0;
    if (!script.file.error.empty())
      FailRun(path, "line " + std::to_string(script.file.error_line) + ": " + script.file.error);
  }
  const std::string shown = OneLineOf(state);
  if (script.next >= script.file.answers.size())
    FailRun(path, "there is no line for this box; to expect it, add\n" + shown + " -> " + "OK");
  const BoxAnswer& answer = script.file.answers[script.next++];
  if (!FitsPattern(answer.expected, shown))
    FailRun(path, "line " + std::to_string(answer.line) + " expects \"" + answer.expected + "\" but the box is \"" +
                      shown + "\"");
  return answer;
}

bool SameText(std::u16string_view a, std::u16string_view b) {
  return CompareStringOrdinal(a.data(), int(a.size()), b.data(), int(b.size()), TRUE) == CSTR_EQUAL;
}

class ScriptedView : public DialogView {
 public:
  ScriptedView(std::string path, BoxAnswer answer) : path_(std::move(path)), answer_(std::move(answer)) {}

  void Show(const DialogState& state) override { state_ = state; }

  DialogEvent Wait() override {
    if (next_ == answer_.presses.size()) Fail("the box is still open after the last name; it has" + Names());
    const std::string& name = answer_.presses[next_++];
    const std::u16string wide = WideFromUtf8(name);
    if (SameText(wide, u"close")) return {DialogEvent::Kind::kClosed, 0};
    const auto control = Find(wide);
    if (!control) Fail("nothing named \"" + name + "\" can be pressed; the box has" + Names());
    return {DialogEvent::Kind::kPressed, *control};
  }

 private:
  [[noreturn]] void Fail(const std::string& reason) const {
    FailRun(path_, "line " + std::to_string(answer_.line) + ": " + reason);
  }

  // By label, then by English label or number.
  std::optional<std::size_t> Find(std::u16string_view name) const {
    for (const bool by_label : {true, false})
      for (std::size_t i = 0; i < state_.controls.size(); ++i) {
        const ControlState& control = state_.controls[i];
        if (!control.IsPressable()) continue;
        if (by_label && SameText(name, PlainLabel(control.text))) return i;
        if (by_label) continue;
        if (name.starts_with(u'#') && SameText(name.substr(1), WideFromUtf8(std::to_string(control.id)))) return i;
        if (state_.is_box && SameText(name, EnglishLabelOfButton(control.id))) return i;
      }
    return {};
  }

  std::string Names() const {
    std::string names;
    for (const ControlState& control : state_.controls)
      if (control.IsPressable())
        names += (names.empty() ? " \"" : ", \"") + Utf8FromWide(PlainLabel(control.text)) + "\"";
    return names.empty() ? " nothing to press" : names;
  }

  const std::string path_;
  const BoxAnswer answer_;
  std::size_t next_ = 0;
  DialogState state_;
};

}  // namespace

std::unique_ptr<DialogView> OpenAnswers(const DialogState& state) {
  const char* const path = std::getenv("KV_ANSWERS");
  if (!path || !*path) return nullptr;
  return std::make_unique<ScriptedView>(path, Next(path, state));
}
