// A module in ten lines: starts the environment, saves a value to the registry and prints the module's name.
#include <kvshare/kvshare.h>
#include <cstdio>

int main() {
  InitShareDll();
  CKVEnvApp* environment = InitAppEnv();
  QFSettingsKey settings(_T("Consumer"), _T("Software\\Zemlor\\Kestrova\\Consumer"));
  settings.AddValue(_T("Greeting"), CString(_T("hello")));
  if (!settings.SaveValuesToRegistry()) return 1;
  CString greeting;
  settings.GetValue(_T("Greeting"), greeting);
  std::printf("%s from %s\n", ToUtf8(greeting).c_str(), ToUtf8(environment->GetKVModuleName()).c_str());
  CloseAppEnv();
}
