// What the main module and the analytics answer about a crash: asked while the process is healthy and again in a crash,
// where they may fail.
#pragma once

#include "platform/types.h"

struct CrashAnswers {
  int isPermitted;
  int showMessage;
  int areAlertsShown;
  int areEventsOn;   // the analytics run
  char title[1024];  // UTF-8
};

// Asks and keeps the answers. On the thread of the document.
void KeepCrashAnswers();

// Asks again, for at most two seconds; what fails has its last known answer. For translators.
CrashAnswers AskInCrash();

// Sets the document's flag to 0. For translators.
void ClearMessageFlag();

// The base name of the files: the title without its extension, with an underscore for each character that a file name
// cannot have, cut to a length that every file system takes. Safe in a translator.
void CrashBaseName(const char* title, char (&name)[256]);
