#include "platform/linux/box_labels.h"

#include <algorithm>
#include <iterator>

#include "platform/locale.h"
#include "platform/windows.h"

namespace {

struct Labels {
  WORD language;
  const char16_t *ok, *cancel, *abort, *retry, *ignore, *yes, *no, *help;
};

// The product's languages. The first row is for all others.
constexpr Labels kLabels[] = {
    {0x09, u"OK", u"Cancel", u"&Abort", u"&Retry", u"&Ignore", u"&Yes", u"&No", u"Help"},
    {0x04, u"确定", u"取消", u"中止(&A)", u"重试(&R)", u"忽略(&I)", u"是(&Y)", u"否(&N)", u"帮助"},
    {0x05, u"OK", u"Storno", u"&Přerušit", u"&Opakovat", u"&Ignorovat", u"&Ano", u"&Ne", u"Nápověda"},
    {0x07, u"OK", u"Abbrechen", u"&Beenden", u"&Wiederholen", u"&Ignorieren", u"&Ja", u"&Nein", u"Hilfe"},
    {0x08, u"OK", u"Άκυρο", u"&Ματαίωση", u"&Επανάληψη", u"&Παράβλεψη", u"&Ναι", u"Ό&χι", u"Βοήθεια"},
    {0x0A, u"Aceptar", u"Cancelar", u"&Anular", u"&Reintentar", u"&Omitir", u"&Sí", u"&No", u"Ayuda"},
    {0x0C, u"OK", u"Annuler", u"A&bandonner", u"&Réessayer", u"&Ignorer", u"&Oui", u"&Non", u"Aide"},
    {0x10, u"OK", u"Annulla", u"Inte&rrompi", u"&Riprova", u"&Ignora", u"&Sì", u"&No", u"Aiuto"},
    {0x11, u"OK", u"キャンセル", u"中止(&A)", u"再試行(&R)", u"無視(&I)", u"はい(&Y)", u"いいえ(&N)", u"ヘルプ"},
    {0x12, u"확인", u"취소", u"중단(&A)", u"다시 시도(&R)", u"무시(&I)", u"예(&Y)", u"아니요(&N)", u"도움말"},
    {0x15, u"OK", u"Anuluj", u"&Przerwij", u"&Ponów próbę", u"&Ignoruj", u"&Tak", u"&Nie", u"Pomoc"},
    {0x16, u"OK", u"Cancelar", u"&Anular", u"&Repetir", u"&Ignorar", u"&Sim", u"&Não", u"Ajuda"},
    {0x19, u"ОК", u"Отмена", u"&Прервать", u"&Повторить", u"П&ропустить", u"&Да", u"&Нет", u"Справка"},
    {0x1F, u"Tamam", u"İptal", u"&Durdur", u"&Yeniden Dene", u"&Yoksay", u"&Evet", u"&Hayır", u"Yardım"},
};

const char16_t* LabelIn(const Labels& labels, int id) {
  switch (id) {
    case IDOK: return labels.ok;
    case IDCANCEL: return labels.cancel;
    case IDABORT: return labels.abort;
    case IDRETRY: return labels.retry;
    case IDIGNORE: return labels.ignore;
    case IDYES: return labels.yes;
    case IDNO: return labels.no;
    case IDHELP: return labels.help;
    default: return u"";
  }
}

}  // namespace

std::u16string_view LabelOfButton(int id) {
  const WORD language = PRIMARYLANGID(GetUserDefaultLangID());
  const auto* const found = std::find_if(std::begin(kLabels), std::end(kLabels),
                                         [&](const Labels& labels) { return labels.language == language; });
  return LabelIn(found == std::end(kLabels) ? kLabels[0] : *found, id);
}

std::u16string_view EnglishLabelOfButton(int id) {
  const std::u16string_view label = LabelIn(kLabels[0], id);
  return label.starts_with(u'&') ? label.substr(1) : label;
}
