#include "peers/calibration/CalibrationWindow.h"

#include "TDUtilities.h"
#include "peers/calibration/CalibrationTexts.h"
#include "platform/Guarded.h"

#include <QAccessible>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QPalette>
#include <QScreen>
#include <QWindow>

#include <chrono>

namespace kelvo {

namespace {

using namespace std::chrono_literals;

/// How long a cross waits on a screen that may not be the display.
constexpr auto kScreenTime = 5s;
/// How long the last word stays for somebody without a keyboard.
constexpr auto kLastWordTime = 8s;
constexpr double kArm = 40.0;
constexpr double kRing = 24.0;

QString localized(const char* key, const char* text) { return QString::fromStdString(localizedString(key, text)); }

} // namespace

CalibrationWindow::CalibrationWindow(platform::CFRunLoop& loop, const std::string& display, bool isPrecise)
    : calibrator_(loop, display, isPrecise,
                  {[this] { showState(); }, [this](Calibrator::Outcome outcome) { end(outcome); }}) {
    setWindowTitle(localized("CalibrationTool.Title", "Calibrate touchscreen"));
    setAccessibleName(windowTitle());
    setAutoFillBackground(true);
    QFont font = text_.font();
    font.setPointSizeF(1.6 * font.pointSizeF());
    text_.setFont(font);
    text_.setAlignment(Qt::AlignCenter);
    text_.setWordWrap(true);
    text_.setFocusPolicy(Qt::StrongFocus);
    nextScreen_.setInterval(kScreenTime);
    QObject::connect(&nextScreen_, &QTimer::timeout, this, [this] { platform::guarded([this] { showNextScreen(); }); });
}

void CalibrationWindow::begin() {
    showOn(0);
    text_.setFocus();
    showState();
    calibrator_.begin();
    if (QGuiApplication::screens().size() > 1) nextScreen_.start();
}

void CalibrationWindow::showOn(int screen) {
    const QList<QScreen*> screens = QGuiApplication::screens();
    if (screens.isEmpty()) return;
    screen_ = screen % static_cast<int>(screens.size());
    QScreen* chosen = screens.at(screen_);
    calibrator_.setOutput(chosen->name().toStdString());
    // Some window systems take a full screen's place only while it is shown anew.
    hide();
    winId();
    windowHandle()->setScreen(chosen);
    setGeometry(chosen->geometry());
    showFullScreen();
    activateWindow();
}

bool CalibrationWindow::canChangeScreen() const {
    return !isOver_ && !(calibrator_.run() && calibrator_.run()->hasBegun()) && QGuiApplication::screens().size() > 1;
}

void CalibrationWindow::showNextScreen() {
    if (!canChangeScreen()) return nextScreen_.stop();
    showOn(screen_ + 1);
    nextScreen_.start();
}

void CalibrationWindow::show(const std::string& text) {
    const QString shown = QString::fromStdString(text);
    if (text_.text() == shown) return;
    text_.setText(shown);
    text_.setAccessibleName(shown);
    QAccessibleEvent event(&text_, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
    placeText();
}

void CalibrationWindow::showState() {
    std::string text = instructionOf(calibrator_);
    if (canChangeScreen()) {
        text += '\n';
        text += localizedString("CalibrationTool.NextScreen", "Press Space to show the cross on another screen.");
    }
    show(text + "\n" + localizedString("CalibrationTool.Escape", "Press Esc to leave everything unchanged."));
    update();
}

void CalibrationWindow::end(Calibrator::Outcome outcome) {
    isOver_ = true;
    isSaved_ = outcome == Calibrator::Outcome::Saved;
    nextScreen_.stop();
    show(textOf(outcome, calibrator_));
    update();
    QTimer::singleShot(kLastWordTime, this, [this] { close(); });
}

/// Above the middle, where no cross is.
void CalibrationWindow::placeText() { text_.setGeometry(width() / 6, height() / 6, width() * 2 / 3, height() / 4); }

void CalibrationWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    placeText();
}

void CalibrationWindow::keyPressEvent(QKeyEvent* event) {
    if (isOver_ || event->key() == Qt::Key_Escape) {
        close();
    } else if (event->key() == Qt::Key_Space) {
        showNextScreen();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void CalibrationWindow::paintEvent(QPaintEvent* event) {
    QWidget::paintEvent(event);
    if (isOver_ || !calibrator_.run()) return;
    const touch::CalibrationRun& run = *calibrator_.run();
    const QPointF middle(run.cross().x * width(), run.cross().y * height());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette().color(QPalette::WindowText), 2.0));
    painter.drawLine(middle - QPointF(kArm, 0.0), middle + QPointF(kArm, 0.0));
    painter.drawLine(middle - QPointF(0.0, kArm), middle + QPointF(0.0, kArm));
    painter.setPen(QPen(palette().color(run.isHolding() ? QPalette::Highlight : QPalette::WindowText),
                        run.isHolding() ? 6.0 : 2.0));
    painter.drawEllipse(middle, kRing, kRing);
}

} // namespace kelvo
