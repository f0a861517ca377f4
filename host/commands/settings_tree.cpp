#include "host/commands/settings_tree.h"

#include <fmt/format.h>

#include <set>
#include <utility>

#include "host/document/document_file.h"
#include "host/module/main_module.h"
#include "host/registry/registry_reader.h"
#include "host/shell/failure.h"
#include "share/settings/settings_transaction.h"

namespace kestrova {

namespace {

using registry_text::Step;

// The step that writes or removes the one registry value of a name.
void AddSteps(const SettingChange& change, std::vector<Step>& steps) {
  const TreeValue& row = *change.row;
  const registry_text::KeyName key{HKEY_CURRENT_USER, row.owner->GetPath().GetString()};
  if (change.to_default && !RegistryKeyHandle(row.owner->GetHandleToKey(/*create=*/0, /*readOnly=*/1))) return;
  const CString name = row.value->GetName();
  steps.push_back({Step::Kind::kCreateKey, 0, key, {}, REG_NONE, {}});
  if (change.to_default) {
    steps.push_back({Step::Kind::kDeleteValue, 0, key, name.GetString(), REG_NONE, {}});
    return;
  }
  const StoredValue stored = row.value->ToStored();
  steps.push_back({Step::Kind::kSetValue, 0, key, name.GetString(), stored.type,
                   std::vector<BYTE>(stored.bytes.begin(), stored.bytes.end())});
}

}  // namespace

SettingsTree::SettingsTree(const std::string& name, const std::string& file, For use) : file_(file) {
  const bool is_document = name.empty() ? !file.empty() : name == kDocumentTree;
  values_.is_document = is_document;
  if (!is_document && !file.empty()) throw WrongUsage("--document cannot be combined with --tree application");
  // The settings of a new document are not stored.
  if (is_document && file.empty() && use == For::kChanging)
    throw WrongUsage("the document is missing: add --document FILE");
  if (is_document && use != For::kChanging) {
    UseLibrary();
  } else {
    StartMainModule(is_document || use == For::kShowing ? Needs::kDefaultsSuffice : Needs::kAllStoredValues);
  }
  if (!file_.empty()) document_.emplace(file_);
  if (is_document) {
    defaults_ = std::make_unique<QFDocSettings>();
    tree_ = document_ ? &document_->document->Settings() : &fresh_.emplace();
  } else {
    OpenApplication(use);
  }
  values_.all = ValuesOf(*tree_, *defaults_);
}

void SettingsTree::OpenApplication(For use) {
  defaults_ = std::make_unique<QFAppSettings>();
  CArray<int, int> buttons;  // a new tree has the stored buttons, not the defaults
  QFToolbarSettings::GetDefaultButtons(buttons);
  defaults_->SetValue(_T("ToolbarButtons"), buttons);
  {
    const SettingsTransaction oneMoment(SettingsTransaction::For::kReading);
    stored_ = std::make_unique<QFAppSettings>();
    stored_->RestoreValuesFromRegistry();
  }
  tree_ = stored_.get();
  ReportRegistry(use == For::kShowing ? Needs::kDefaultsSuffice : Needs::kAllStoredValues);
}

void SettingsTree::Save(const std::vector<SettingChange>& changes) {
  if (document_) {
    document_->document->FreezeIds(false);
    SaveDocument(*document_->document, file_);
    return;
  }
  std::vector<Step> steps;
  std::set<std::pair<QFSettingsKey*, std::string>> done;
  for (const SettingChange& change : changes)
    if (done.emplace(change.row->owner, change.row->name).second) AddSteps(change, steps);
  registry_text::Error error;
  if (!registry_text::Apply(steps, error)) throw Failure(TextOf(error) + "; nothing was changed");
}

}  // namespace kestrova
