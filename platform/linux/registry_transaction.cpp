// Transactions: each has a connection of its own to each hive it writes.
#include <mutex>

#include "platform/handles.h"
#include "platform/linux/errno_status.h"
#include "platform/linux/handle_table.h"
#include "platform/linux/registry_calls.h"

using namespace kvregistry;

namespace {

class Transaction : public HandleObject, public Scope {
 public:
  ~Transaction() override { End(/*commit=*/false); }

  std::shared_ptr<Store> StoreFor(const Store& store) override {
    const std::lock_guard lock(mutex_);
    if (ended_) return nullptr;
    std::shared_ptr<Store>& own = stores_[store.WhichHive() == Hive::kMachine];
    if (!own) own = TransactedStore(store);
    return own;
  }

  LSTATUS End(bool commit) {
    const std::lock_guard lock(mutex_);
    LSTATUS status = ended_ ? ERROR_TRANSACTION_NOT_ACTIVE : ERROR_SUCCESS;
    for (auto& store : stores_) {
      if (!store || ended_) continue;
      const std::lock_guard store_lock(store->Mutex());
      if (commit && status == ERROR_SUCCESS) {
        status = store->Commit();
      } else {
        store->RollBack();
      }
    }
    ended_ = true;
    return status;
  }

 private:
  std::mutex mutex_;
  std::shared_ptr<Store> stores_[2];
  bool ended_ = false;
};

}  // namespace

bool HasRegistryTransactions() { return true; }

HANDLE CreateTransaction(SECURITY_ATTRIBUTES*, void*, DWORD, DWORD, DWORD, DWORD, LPWSTR) {
  return AddHandle(std::make_shared<Transaction>());
}

BOOL CommitTransaction(HANDLE handle) {
  const auto transaction = ::FindHandle<Transaction>(handle);
  const LSTATUS status = transaction ? transaction->End(/*commit=*/true) : ERROR_INVALID_HANDLE;
  return status == ERROR_SUCCESS || FailWithStatus(status);
}

LSTATUS RegCreateKeyTransactedW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR className, DWORD options, REGSAM rights,
                                const SECURITY_ATTRIBUTES*, PHKEY opened, DWORD* disposition, HANDLE transaction,
                                void* extended) {
  const auto scope = ::FindHandle<Transaction>(transaction);
  if (!scope) return ERROR_INVALID_HANDLE;
  if (reserved != 0 || extended) return ERROR_INVALID_PARAMETER;
  return CreateKey(*scope, key, path, className, {options, rights, opened}, disposition);
}

LSTATUS RegOpenKeyTransactedW(HKEY key, LPCWSTR path, DWORD options, REGSAM rights, PHKEY opened, HANDLE transaction,
                              void* extended) {
  const auto scope = ::FindHandle<Transaction>(transaction);
  if (!scope) return ERROR_INVALID_HANDLE;
  return extended ? ERROR_INVALID_PARAMETER : OpenKey(*scope, key, path, {options, rights, opened});
}

LSTATUS RegDeleteKeyTransactedW(HKEY key, LPCWSTR path, REGSAM, DWORD reserved, HANDLE transaction, void* extended) {
  const auto scope = ::FindHandle<Transaction>(transaction);
  if (!scope) return ERROR_INVALID_HANDLE;
  return reserved != 0 || extended ? ERROR_INVALID_PARAMETER : DeleteKey(*scope, key, path);
}
