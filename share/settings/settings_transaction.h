// SettingsTransaction: while it exists, the settings trees of its thread use one transaction of the registry
// (platform/registry.h), for exports and for changes that depend on what is stored:
//
//   SettingsTransaction transaction(SettingsTransaction::For::kChanging);
//   table.RestoreValuesFromRegistry();                   // one state, whatever other processes write meanwhile
//   table.SaveValuesToRegistry();
//   if (transaction.Commit() != ERROR_SUCCESS) ...       // now everybody sees the change; without Commit nobody does
//
// For reading: keys are opened with KEY_READ and not created; a save fails. For changing: a restore that opens its key
// with all rights, as that of the feed colours, makes other writers wait until the end. Don't nest transactions.
#pragma once

#include "share/core/registry_transaction.h"

class KVSHARE_API SettingsTransaction {
 public:
  enum class For { kReading, kChanging };

  explicit SettingsTransaction(For use);
  ~SettingsTransaction();
  SettingsTransaction(const SettingsTransaction&) = delete;
  SettingsTransaction& operator=(const SettingsTransaction&) = delete;

  LSTATUS Commit() { return transaction_.Commit(); }
  // The handle of the calling thread's transaction; null without one.
  static HANDLE Current();
  // Whether the calling thread has a transaction for reading.
  static bool IsReading();

 private:
  const For use_;
  RegistryTransaction transaction_;
};
