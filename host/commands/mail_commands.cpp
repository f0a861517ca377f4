// kestrova mail: opens a mail with attachments in the user's mail program.
#include <fmt/format.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

#include "framework/text.h"
#include "host/commands/commands.h"
#include "host/module/main_module.h"
#include "host/shell/arguments.h"
#include "host/shell/failure.h"
#include "host/shell/output.h"
#include "platform/files.h"
#include "platform/mail.h"
#include "platform/paths.h"
#include "share/interface/mail.h"

namespace kestrova {

namespace {

constexpr char kNoMail[] = "there is no mail program: install xdg-utils and a mail program, and make it the default";

struct Options {
  std::string subject, body;
  std::vector<std::string> to, cc, attach;
  bool json = false;
};

// In the encoding of the mail library.
std::string Narrow(const char* what, const std::string& argument) {
  RequireUtf8(what, argument);
  return MailText(FromUtf8(argument).View());
}

void Address(const char* what, const std::string& argument) {
  if (argument.empty() || argument.starts_with('-') || argument.find('@') == argument.npos)
    throw WrongUsage(fmt::format("{}: \"{}\" is no mail address", what, argument));
}

void AttachTo(CQFIMapi& mail, const std::string& file) {
  const Text path = ProductPathFromSystem(file);
  if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES)
    throw Failure(fmt::format("cannot read {}: {}", file, ErrorText(GetLastError())), {.file = file});
  mail.Attach(MailText(path).c_str(), nullptr);
}

void Send(const Options& options) {
  StartMainModule();  // the texts of the language
  if (!CQFIMapi::HasEmail()) throw Failure(kNoMail);
  CQFIMapi mail;
  for (const std::string& address : options.to) {
    Address("--to", address);
    mail.To(Narrow("--to", address).c_str());
  }
  for (const std::string& address : options.cc) {
    Address("--cc", address);
    mail.Cc(Narrow("--cc", address).c_str());
  }
  for (const std::string& file : options.attach) AttachTo(mail, file);
  mail.Subject(Narrow("--subject", options.subject).c_str());
  mail.BodyText(options.body.c_str());
  if (!mail.Send(0)) throw Failure("the mail program could not be started, or refused the mail");
  if (options.json) {
    PrintJson({{"to", options.to}, {"cc", options.cc}, {"subject", options.subject}, {"attachments", options.attach}});
  }
}

void Check(const Options& options) {
  const bool has = CQFIMapi::HasEmail() != 0;
  if (options.json) {
    PrintJson({{"hasMail", has}});
  } else {
    Print("{}\n", has ? "there is a mail program" : kNoMail);
  }
  if (!has) throw FoundErrors();
}

}  // namespace

void AddMailCommands(CLI::App& group) {
  static Options options;
  group.require_subcommand(1);
  CLI::App* send = group.add_subcommand("send", "Open a mail in the user's mail program; the user sends it");
  send->footer("Example:\n  kestrova mail send --to support@example.com --subject 'A part' --attach part.kvdoc");
  send->callback([] { Send(options); });
  const auto list = [&](const char* name, std::vector<std::string>& values, const char* what) {
    return send->add_option(name, values, what)->allow_extra_args(false);
  };
  list("--to", options.to, "An address; several by several options")->required();
  list("--cc", options.cc, "An address that gets a copy");
  send->add_option("--subject", options.subject, "The subject");
  send->add_option("--body", options.body, "The text");
  list("--attach", options.attach, "A file; several by several options");
  CLI::App* check = group.add_subcommand("check", "Whether the user has a mail program; exit code 1 if not");
  check->footer("Example:\n  kestrova mail check");
  check->callback([] { Check(options); });
  for (CLI::App* command : {send, check}) command->add_flag("--json", options.json, "As JSON");
}

}  // namespace kestrova
