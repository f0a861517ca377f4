// Outcome: the one way to show a message to the user. It decides whether a box is shown at all, picks the owner window
// and the caption, and returns the pressed button.
//
//   Outcome message(0, SEVERITY_WARNING_YES_NO);
//   if (message.Display(31200, count) == IDYES) Delete();
//
// Without a box the answer is IDYES (6): if the main module's displayAlerts callback sets its flag to 0
// (share/core/document_callbacks.h), and for a string that cannot be loaded.
//
// The new labels and the focus of buttons are common to all objects: two threads must not show relabelled boxes at the
// same time. Otherwise any thread may show a message.
#pragma once

#include "framework/window.h"

// Selects the icon, the buttons and the default caption. Other values have no box.
enum SeverityIndex {
  SEVERITY_STOP = 0,                       // OK
  SEVERITY_WARNING_YES_NO = 1,             // Yes, No
  SEVERITY_WARNING_YES_NO_CANCEL = 2,      // Yes, No, Cancel
  SEVERITY_INFORMATION = 3,                // OK
  SEVERITY_INFORMATION_YES_NO = 4,         // Yes, No
  SEVERITY_INFORMATION_YES_NO_CANCEL = 5,  // Yes, No, Cancel
};

class KVSHARE_API Outcome {
 public:
  static constexpr unsigned long kNoHelp = 0xFFFFFFFF;
  // The result if nothing was shown because the severity has no box.
  static constexpr unsigned kNoBox = unsigned(-101);

  // captionId: the main module's text (GetProductSpecificString); 0 for the severity's own caption. helpId: the topic
  // of the Help button, which kNoHelp leaves out. parent: the owner; null for the application's main window.
  // productSpecific: whether the text passes through GetProductSpecificString2.
  explicit Outcome(int code = 0, SeverityIndex severity = SEVERITY_INFORMATION, unsigned captionId = 0,
                   unsigned long helpId = kNoHelp, CWnd* parent = nullptr, int productSpecific = 1);

  // Shows string number `stringId` of the language library with the arguments in its printf places, at most 500
  // characters longer than the string. Returns the pressed button (1 OK, 2 Cancel, 6 Yes, 7 No), 0 if the box cannot
  // appear, kNoBox, or IDYES without a box.
  template <class... Arguments>
  unsigned Display(int stringId, const Arguments&... arguments) {
    CString format, text;
    if (!IsShown() || !format.LoadString(UINT(stringId))) return IDYES;
    m_nMessageId = unsigned(stringId);
    text.Format(format.GetString(), arguments...);
    return Display(text.Left(format.GetLength() + kMostInserted));
  }
  // Shows the text.
  unsigned Display(CString text);

  // 1 if the code is 0.
  int Ok() const { return m_nCode == 0; }
  // 1: the box is shown even if the main module wants none.
  void SetAlwaysShowMsg(int always) { m_bAlwaysShow = always; }

  // New labels for this object's boxes, with "&" before the letter of the shortcut. Only one of the two has an effect,
  // the last one called. On a box with a Help button the label of Cancel is unchanged.
  void SetMessageBoxButtonNewLabels(const CString& yes, const CString& no);
  void SetMessageBoxButtonNewLabels(const CString& yes, const CString& no, const CString& cancel);
  // 7 (IDNO): the next relabelled box has the focus on No; after it, boxes have it on Yes again.
  void SetMessageBoxButtonFocus(int button) { m_buttonID = button; }

  // Called by the Help button of a box with the topic's number. The help system sets it; null: no help.
  using ShowHelpFn = int (*)(int command, unsigned long context, int flags);
  static void SetShowHelp(ShowHelpFn showHelp) { m_pShowHelp = showHelp; }
  // What the boxes and the dialogs of this folder call for help. 0 without a help system.
  static int ShowHelp(unsigned long context) { return m_pShowHelp ? m_pShowHelp(1, context, 1) : 0; }

 private:
  static constexpr int kMostInserted = 500;

  struct Owners {
    HWND owner;   // re-enabled at the end
    HWND second;  // of the calling thread
  };

  int IsShown() const;
  Owners FindOwners() const;
  CString Caption() const;
  int ShowBox(HWND owner, const CString& text, const CString& caption, unsigned flags) const;
  static int IsDisplayDialog();

  static int MsgBoxButtonCaptionsChanged(HWND owner, const CString& text, const CString& caption, unsigned flags);
  static int MsgBoxYesNoCancelButtonCaptionsChanged(HWND owner, const CString& text, const CString& caption,
                                                    unsigned flags);
  static int MsgBoxIndirectButtonCaptionsChanged(const MSGBOXPARAMSW& request);
  static LRESULT CALLBACK CBTProc(int code, WPARAM wParam, LPARAM lParam);
  static LRESULT CALLBACK CBTProcForYesNoCancel(int code, WPARAM wParam, LPARAM lParam);
  static LRESULT OnBoxEvent(int code, WPARAM wParam, LPARAM lParam, bool withCancel);

  SeverityIndex m_eSeverity;
  int m_nCode;
  unsigned m_nCaptionId;
  unsigned long m_nHelpId;
  CWnd* m_pParent;
  int m_bYesNoRelabelled = 0;
  int m_bYesNoCancelRelabelled = 0;
  unsigned m_nMessageId = 0;  // the last one of Display(int, ...)
  int m_bAlwaysShow = 0;
  int m_bProductSpecific;

  static CString m_strIDYES, m_strIDNO, m_strIDCancel;
  static int m_buttonID;
  static HHOOK m_hMsgBoxHook;
  static ShowHelpFn m_pShowHelp;
};
