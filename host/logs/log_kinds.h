// The developer logs as a user of the command line knows them: one kind for each type of time log and each other log.
#pragma once

#include <string>
#include <vector>

#include "framework/text.h"
#include "platform/types.h"

namespace kestrova {

struct LogKind {
  const char* name;  // "events"
  LPCTSTR key;       // of the user's hive
  LPCTSTR value;     // the log's switch
  int type;          // of a time log, else 0
};

const std::vector<LogKind>& LogKinds();

// Whether the registry switches the log on.
bool IsOn(const LogKind& kind);
// Writes the switch. Of the time logs with a type only one is on at a time; the plain log is on with each of them and
// stays on when one is switched off. Throws Failure if it can't be written.
void SwitchOn(const LogKind& kind);
void SwitchOff(const LogKind& kind);

struct LogFile {
  const LogKind* kind;
  CString path;        // the product's
  std::string system;  // the same for a message
  ULONGLONG bytes;
};

// The files of the logs' folder, of one kind or, for null, of all. Other files are none.
std::vector<LogFile> LogFiles(const LogKind* kind);

}  // namespace kestrova
