#include "platform/linux/registry_stores.h"

#include <pthread.h>

#include <cstdlib>
#include <filesystem>
#include <list>

#include "platform/linux/user.h"

namespace kvregistry {

namespace {

// The variable of the environment that a hive's folder comes from.
enum class Variable { kNone, kRegistry, kConfigHome, kHome };

struct FolderSource {
  Variable variable = Variable::kNone;
  const char* text = "";  // the variable's, until the environment changes
};

struct CurrentFolder {
  Variable variable = Variable::kNone;
  std::string text;
  std::shared_ptr<Store> store;
};

// Never destroyed: destructors of other static objects may use the registry.
struct Stores {
  std::mutex mutex;
  CurrentFolder current[2];
  std::vector<std::shared_ptr<Store>> by_folder;
  std::list<Store*> all;
  // The store of each hive's last transaction, for the next one: opening a connection takes as long as writing 30
  // values.
  std::unique_ptr<Store> unused[2];
};

void BeforeFork();
void AfterForkInParent();
void AfterForkInChild();

Stores& AllStores() {
  static Stores* const stores = [] {
    pthread_atfork(BeforeFork, AfterForkInParent, AfterForkInChild);
    return new Stores;
  }();
  return *stores;
}

// SQLite forbids using a connection across a fork, so plain stores are closed before it. A transaction keeps its
// connection, which the child abandons.
void BeforeFork() {
  Stores& stores = AllStores();
  stores.mutex.lock();
  for (auto& store : stores.unused) store.reset();
  for (Store* store : stores.all) {
    store->Mutex().lock();
    if (!store->IsTransacted()) store->Close();
  }
}

void AfterForkInParent() {
  Stores& stores = AllStores();
  for (Store* store : stores.all) store->Mutex().unlock();
  stores.mutex.unlock();
}

void AfterForkInChild() {
  for (Store* store : AllStores().all) store->Abandon();
  AfterForkInParent();
}

const char* TextOf(const char* variable) {
  const char* text = std::getenv(variable);
  return text && *text ? text : nullptr;
}

FolderSource SourceFor(Hive hive) {
  if (const char* text = TextOf("KV_REGISTRY")) return {Variable::kRegistry, text};
  if (hive == Hive::kMachine) return {};
  if (const char* text = TextOf("XDG_CONFIG_HOME"); text && *text == '/') return {Variable::kConfigHome, text};
  const char* home = TextOf("HOME");
  return {Variable::kHome, home ? home : ""};
}

std::string FolderOf(Variable variable, const std::string& text) {
  switch (variable) {
    case Variable::kRegistry: {
      std::error_code none;  // without a current folder a relative path stays as it is, and opening it fails
      const std::string whole = std::filesystem::absolute(text, none).string();
      return whole.empty() ? text : whole;
    }
    case Variable::kConfigHome: return text + "/kestrova/registry";
    case Variable::kHome: return (text.empty() ? EffectiveUser().home : text) + "/.config/kestrova/registry";
    case Variable::kNone: return "/var/lib/kestrova/registry";
  }
  return {};
}

std::shared_ptr<Store> StoreIn(Stores& stores, Hive hive, const std::string& folder) {
  for (const auto& store : stores.by_folder) {
    if (store->WhichHive() == hive && store->Folder() == folder) return store;
  }
  return nullptr;
}

}  // namespace

std::shared_ptr<Store> CurrentStore(Hive hive) {
  const FolderSource source = SourceFor(hive);
  Stores& stores = AllStores();
  const std::lock_guard lock(stores.mutex);
  CurrentFolder& current = stores.current[hive == Hive::kMachine];
  if (current.store && current.variable == source.variable && current.text == source.text) return current.store;
  if (current.store) {  // a process that uses many folders in turn must not run out of files
    const std::lock_guard store_lock(current.store->Mutex());
    current.store->Close();
  }
  current.variable = source.variable;
  current.text = source.text;
  const std::string folder = FolderOf(current.variable, current.text);
  current.store = StoreIn(stores, hive, folder);
  if (!current.store) {
    current.store = std::make_shared<Store>(hive, folder);
    stores.by_folder.push_back(current.store);
    stores.all.push_back(current.store.get());
  }
  return current.store;
}

std::shared_ptr<Store> TransactedStore(const Store& store) {
  Stores& stores = AllStores();
  const std::shared_ptr<Store> plain = store.Plain();
  const auto keep_for_reuse = [&stores](Store* used) {
    std::unique_ptr<Store> last(used);  // destroyed outside the lock
    const std::lock_guard lock(stores.mutex);
    stores.all.remove(used);
    if (used->PrepareForReuse()) stores.unused[used->WhichHive() == Hive::kMachine].swap(last);
  };
  std::unique_ptr<Store> own;
  {
    const std::lock_guard lock(stores.mutex);
    own.swap(stores.unused[plain->WhichHive() == Hive::kMachine]);
  }
  if (!own || own->Plain() != plain || !own->PrepareForReuse()) own = std::make_unique<Store>(plain.get());
  std::shared_ptr<Store> transacted(own.release(), keep_for_reuse);
  const std::lock_guard lock(stores.mutex);
  stores.all.push_back(transacted.get());
  return transacted;
}

}  // namespace kvregistry
