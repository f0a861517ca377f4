// The calls on keys, shared by their plain and their transacted forms. Internal to platform/linux.
#pragma once

#include "platform/linux/registry_handles.h"

namespace kvregistry {

// Where an opening call looks: in the hive, or in a transaction.
class Scope {
 public:
  virtual ~Scope() = default;
  // The store to use for a key whose handle belongs to `store`; null if the transaction has ended.
  virtual std::shared_ptr<Store> StoreFor(const Store& store) = 0;
};

// The scope of the calls without Transacted in their names.
Scope& NoTransaction();

struct OpenArguments {
  DWORD options;
  REGSAM rights;
  PHKEY opened;
};

LSTATUS OpenKey(Scope& scope, HKEY key, LPCWSTR path, const OpenArguments& arguments);
LSTATUS CreateKey(Scope& scope, HKEY key, LPCWSTR path, LPCWSTR class_name, const OpenArguments& arguments,
                  DWORD* disposition);
LSTATUS DeleteKey(Scope& scope, HKEY key, LPCWSTR path);

}  // namespace kvregistry
