// Forms mode: reads the technology database's path from a forms file and writes it there.
#include "companions/database/recordset.h"
#include "framework/application.h"
#include "platform/files.h"
#include "share/env/app_env.h"

namespace {

// Asks the user until the forms file exists, and makes it writable. False if the user cancels.
bool WaitForFormsFile(const CString& path, const CString& name, const CString& folder) {
  while (_waccess(path, 0) != 0) {
    const CString text =
        name + _T(" could not be found at ") + folder + _T("\n\nCopy the file at the location and click OK to resume");
    if (AfxMessageBox(text, MB_OKCANCEL) != IDOK) return false;
  }
  if (_waccess(path, 6) != 0) {
    // The text always has this name, kept for existing installations.
    AfxMessageBox(_T("Changing File Attributes to Read/Write for the file :TechDBForms.mde"));
    _wchmod(path, _S_IREAD | _S_IWRITE);
  }
  return true;
}

}  // namespace

void CKVEnvApp::SetKVTechDBPath(int write) {
  if (!m_bConfigData) {
    ExchangeTechDBPathWithForms(write);
  } else if (const QFTechDBConfigData* active = GetActiveTechDBConfigData()) {
    m_TechDBPath = active->GetFilePath();
  }
}

void CKVEnvApp::ExchangeTechDBPathWithForms(int write) try {
  const CString path = GetKVTechDBFormsPath();
  if (!WaitForFormsFile(path, m_TechDBFormsName, GetKVDataPath() + m_LanguageFolder)) {
    m_InitResult = ENVAPP_INIT_TECHDB_FAILED;
    return;
  }
  CDaoDatabase forms(m_b64BitDatabase, m_bSQLiteDatabase);
  forms.Open(path);
  CDaoRecordset paths(&forms);
  paths.SetCursorLocation(CDaoRecordset::useClient);
  paths.SetMostRecords(1);  // the path is in the first row
  paths.Open(_T("SELECT [path] FROM TechDBFormsPathTable;"));
  if (paths.GetRecordCount() > 0) {
    const CDaoFieldExchange exchange(write ? CDaoFieldExchange::StoreField : CDaoFieldExchange::LoadField);
    paths.DFX_Text(&exchange, _T("path"), m_TechDBPath);
    if (write) paths.Update();
  }
  paths.Close();
} catch (const CException& failure) {
  failure.ReportError();
}
