// Commit of a compound file writes a SafeFile.
#include "platform/safe_compound_file.h"

#include "platform/errors.h"

SafeCompoundFile::SafeCompoundFile(LPCWSTR target) : target_(target), path_(target) {}

SafeCompoundFile::~SafeCompoundFile() = default;

LONG SafeCompoundFile::Replace() { return ERROR_SUCCESS; }
