#include "desktop/dialog_widget.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QCloseEvent>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>
#include <map>

namespace {

constexpr int kMostColumns = 75;  // of a box's text, in average characters
constexpr int kIconPixels = 48;
constexpr double kMostOfScreen = 0.6;  // height of a box's text; a longer one scrolls

std::map<HWND, DialogWidget*>& Shown() {
  static auto* const shown = new std::map<HWND, DialogWidget*>;
  return *shown;
}

QString TextOf(std::u16string_view text) { return QString::fromUtf16(text.data(), qsizetype(text.size())); }

bool HasCloseButton(const DialogState& state) {
  if (!state.is_box) return true;
  return std::any_of(state.controls.begin(), state.controls.end(),
                     [](const ControlState& control) { return control.id == IDCANCEL || control.id == IDOK; });
}

Qt::WindowFlags FlagsOf(const DialogState& state) {
  const Qt::WindowFlags flags = Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint;
  return HasCloseButton(state) ? flags | Qt::WindowCloseButtonHint : flags;
}

QStyle::StandardPixmap PixmapOf(BoxIcon icon) {
  switch (icon) {
    case BoxIcon::kStop: return QStyle::SP_MessageBoxCritical;
    case BoxIcon::kQuestion: return QStyle::SP_MessageBoxQuestion;
    case BoxIcon::kExclamation: return QStyle::SP_MessageBoxWarning;
    case BoxIcon::kInformation:
    case BoxIcon::kNone: break;
  }
  return QStyle::SP_MessageBoxInformation;
}

// A button whose shortcut acts at once: Qt would wait a tenth of a second, in which another key cancels it.
template <class Button>
class PromptButton : public Button {
 public:
  using Button::Button;

 protected:
  bool event(QEvent* event) override {
    if (event->type() != QEvent::Shortcut || static_cast<QShortcutEvent*>(event)->isAmbiguous())
      return Button::event(event);
    this->setFocus(Qt::ShortcutFocusReason);
    this->click();
    return true;
  }
};

// The label of a static text: a lone "&" underlines nothing here, so it is left out.
QString LabelText(const ControlState& control) { return TextOf(PlainLabel(control.text)); }

}  // namespace

DialogWidget::DialogWidget(const DialogState& state, QWidget* owner, std::function<void(DialogEvent)> post)
    : QDialog(owner, FlagsOf(state)), post_(std::move(post)), handle_(state.window) {
  Shown()[handle_] = this;
  if (owner) setWindowModality(Qt::WindowModal);
  for (std::size_t i = 0; i < state.controls.size(); ++i) widgets_.push_back(NewControl(state.controls[i], i));
  shown_.resize(widgets_.size());
  state.is_box ? ArrangeBox(state) : ArrangeTemplate(state);
}

// The owner may delete it while somebody waits.
DialogWidget::~DialogWidget() {
  Shown().erase(handle_);
  post_({DialogEvent::Kind::kFailed, 0});
}

QWidget* DialogWidget::Find(HWND window) {
  const auto found = Shown().find(window);
  return found != Shown().end() ? found->second : QWidget::find(reinterpret_cast<WId>(window));
}

QWidget* DialogWidget::NewControl(const ControlState& control, std::size_t index) {
  QAbstractButton* button = nullptr;
  QWidget* widget = nullptr;
  switch (control.kind) {
    case ControlKind::kButton: widget = button = new PromptButton<QPushButton>(this); break;
    case ControlKind::kCheckBox: widget = button = new PromptButton<QCheckBox>(this); break;
    case ControlKind::kGroup: widget = new QGroupBox(this); break;
    case ControlKind::kText: {
      auto* const label = new QLabel(this);
      label->setTextFormat(Qt::PlainText);
      label->setWordWrap(true);
      label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
      widget = label;
      break;
    }
    case ControlKind::kOther: return nullptr;
  }
  widget->setObjectName(QString::number(control.id));
  if (button)
    connect(button, &QAbstractButton::clicked, this, [this, index] { post_({DialogEvent::Kind::kPressed, index}); });
  return widget;
}

// ---- a message box

void DialogWidget::ArrangeBox(const DialogState& state) {
  auto* const rows = new QVBoxLayout(this);
  auto* const message = new QHBoxLayout;
  const int margin = fontMetrics().height();
  rows->setContentsMargins(margin, margin, margin, margin);
  rows->setSpacing(margin);
  message->setSpacing(margin);
  if (state.icon != BoxIcon::kNone) {
    auto* const icon = new QLabel(this);
    icon->setPixmap(style()->standardIcon(PixmapOf(state.icon), nullptr, this).pixmap(kIconPixels));
    icon->setObjectName("icon");
    message->addWidget(icon, 0, Qt::AlignTop);
  }
  message->addWidget(NewText(TextOf(state.text)), 1, Qt::AlignVCenter | Qt::AlignLeft);
  rows->addLayout(message);
  auto* const buttons = new QHBoxLayout;
  buttons->addStretch(1);
  for (QWidget* const widget : widgets_) buttons->addWidget(widget);
  rows->addLayout(buttons);
  rows->setSizeConstraint(QLayout::SetFixedSize);
}

// The text in lines of a readable width; a text that is higher than the screen allows gets a scroll bar.
QWidget* DialogWidget::NewText(const QString& text) {
  auto* const label = new QLabel(this);
  label->setObjectName("text");
  label->setTextFormat(Qt::PlainText);
  label->setText(text);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  label->setFocusPolicy(Qt::NoFocus);
  const int widest = kMostColumns * fontMetrics().averageCharWidth();
  if (label->sizeHint().width() > widest) {
    label->setWordWrap(true);
    label->setFixedWidth(widest);
  }
  const int height = label->hasHeightForWidth() ? label->heightForWidth(widest) : label->sizeHint().height();
  const int highest = int(kMostOfScreen * screen()->availableGeometry().height());
  if (height <= highest) return label;
  label->resize(label->width(), height);
  auto* const area = new QScrollArea(this);
  area->setWidget(label);
  area->setFrameShape(QFrame::NoFrame);
  area->setFixedSize(label->sizeHint().width() + 2 * style()->pixelMetric(QStyle::PM_ScrollBarExtent), highest);
  return area;
}

// ---- a dialog of a template

// One unit of a template is a quarter of an average character's width and an eighth of its height.
void DialogWidget::ArrangeTemplate(const DialogState& state) {
  const QFontMetrics metrics = fontMetrics();
  const int across = (metrics.horizontalAdvance("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz") / 26 + 1) / 2;
  const int down = metrics.height();
  const auto x = [&](LONG units) { return int(units) * across / 4; };
  const auto y = [&](LONG units) { return int(units) * down / 8; };
  for (std::size_t i = 0; i < widgets_.size(); ++i) {
    const RECT& place = state.controls[i].place;
    if (widgets_[i])
      widgets_[i]->setGeometry(x(place.left), y(place.top), x(place.right - place.left), y(place.bottom - place.top));
  }
  setFixedSize(x(state.width), y(state.height));
}

// ---- changes

void DialogWidget::ApplyControl(std::size_t index, const ControlState& control) {
  QWidget* const widget = widgets_[index];
  if (auto* const label = qobject_cast<QLabel*>(widget)) label->setText(LabelText(control));
  if (auto* const group = qobject_cast<QGroupBox*>(widget)) group->setTitle(TextOf(control.text));
  if (auto* const button = qobject_cast<QAbstractButton*>(widget)) {
    button->setText(TextOf(control.text));
    button->setCheckable(control.kind == ControlKind::kCheckBox);
    button->setChecked(control.checked);
    button->setFocusPolicy(control.tab_stop ? Qt::StrongFocus : Qt::ClickFocus);
  }
  widget->setEnabled(control.enabled);
  widget->setVisible(control.visible);
}

void DialogWidget::Apply(const DialogState& state) {
  const bool first = !isVisible();
  setWindowTitle(TextOf(state.title));
  for (std::size_t i = 0; i < widgets_.size(); ++i) {
    const ControlState& control = state.controls[i];
    // The user's click has changed a check box already, whatever the dialog makes of it.
    const bool check = control.kind == ControlKind::kCheckBox;
    if (widgets_[i] && (first || check || !control.LooksLike(shown_[i]))) ApplyControl(i, control);
    shown_[i] = control;
  }
  if (auto* const button = first && state.default_button < widgets_.size()
                               ? qobject_cast<QPushButton*>(widgets_[state.default_button])
                               : nullptr)
    button->setDefault(true);
  const bool moved = first || state.focus != focus_;
  focus_ = state.focus;
  if (first) show();
  if (first && state.foreground) {
    raise();
    activateWindow();
  }
  if (moved && focus_ < widgets_.size() && widgets_[focus_]) widgets_[focus_]->setFocus(Qt::TabFocusReason);
}

void DialogWidget::closeEvent(QCloseEvent* event) {
  event->ignore();
  post_({DialogEvent::Kind::kClosed, 0});
}

void DialogWidget::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_F1) return post_({DialogEvent::Kind::kHelp, 0});
  QDialog::keyPressEvent(event);
}
