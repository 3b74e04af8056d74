#pragma once

#include "peers/calibration/Calibrator.h"

#include <QLabel>
#include <QTimer>
#include <QWidget>

namespace kelvo {

/// Shows the crosses over the whole of a screen. Until one was touched, the cross goes from screen to screen, since
/// nobody knows yet which of them the display is.
class CalibrationWindow final : public QWidget {
public:
    CalibrationWindow(platform::CFRunLoop& loop, const std::string& display, bool isPrecise);

    void begin();
    [[nodiscard]] bool isSaved() const { return isSaved_; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void showOn(int screen);
    void showNextScreen();
    [[nodiscard]] bool canChangeScreen() const;
    void show(const std::string& text);
    void showState();
    void end(Calibrator::Outcome outcome);
    void placeText();

    QLabel text_{this};
    QTimer nextScreen_;
    int screen_ = 0;
    bool isOver_ = false;
    bool isSaved_ = false;
    Calibrator calibrator_;
};

} // namespace kelvo
