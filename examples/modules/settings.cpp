// An own group of settings: defaults, the registry, and a document of an older release.
#include <kvshare/kvshare.h>

#include <cstdio>

// begin group
constexpr SettingsRow kShopRows[] = {
    {_T("ShopName"), _T("Main hall")},
    {_T("SafeHeight"), 25.0},
    {_T("AskBeforeExport"), 1},
};

// Its registry key is Shop below the product's.
class ShopSettings : public SettingsGroup {
  DECLARE_SERIAL(ShopSettings)

 public:
  ShopSettings()
      : SettingsGroup(typeid(ShopSettings), _T("ShopSettings"), _T("Shop"), InProductRoot(_T("Shop")), kShopRows) {}
};

IMPLEMENT_SERIAL(ShopSettings, QFSettingsKey, VERSIONABLE_SCHEMA | 1)
// end group

void Print(const char* title, const ShopSettings& settings) {
  CString name;
  double height = 0;
  int ask = 0;
  settings.GetValue(_T("ShopName"), name);
  settings.GetValue(_T("SafeHeight"), height);
  settings.GetValue(_T("AskBeforeExport"), ask);
  std::printf("%s: %s, height %g, ask %d\n", title, ToUtf8(name).c_str(), height, ask);
}

// begin main
int main() {
  InitShareDll();
  ShopSettings settings;
  Print("defaults", settings);

  settings.SetValue(_T("SafeHeight"), 40.0);
  settings.SetValue(_T("SafeHeigth"), 50.0);  // an unknown name changes nothing
  settings.SetValue(_T("SafeHeight"), 60);    // neither does a value of another type: 60 is an int
  if (!settings.SaveValuesToRegistry()) return 1;

  ShopSettings again;
  again.RestoreValuesFromRegistry();
  Print("from the registry", again);
  // end main

  // begin merge
  // The settings of an older release had a name that is gone, and no AskBeforeExport.
  QFSettingsKey old;
  old.AddValue(_T("ShopName"), CString(_T("Annex")));
  old.AddValue(_T("Coolant"), 2);
  CMemFile file;
  {
    CArchive ar(&file, CArchive::store);
    old.Serialize(ar);
    ar.Close();
  }
  file.SeekToBegin();
  ShopSettings merged;
  CArchive ar(&file, CArchive::load);
  merged.Serialize(ar);
  Print("from an old document", merged);
}
// end merge
