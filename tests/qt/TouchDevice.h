#pragma once

#include <QPoint>
#include <QTest>
#include <QWidget>

namespace kelvo {

/// One finger on a touchscreen. What it does comes in as from the window system, with what the toolkit makes of it.
class Finger {
public:
    void press(QWidget& widget, QPoint place) { event(widget).press(0, place, &widget); }
    void moveTo(QWidget& widget, QPoint place) { event(widget).move(0, place, &widget); }
    void lift(QWidget& widget, QPoint place) { event(widget).release(0, place, &widget); }

    void tap(QWidget& widget, QPoint place) {
        press(widget, place);
        lift(widget, place);
    }

    /// Presses there, moves that far in steps as a real finger does, and stays down.
    void push(QWidget& widget, QPoint from, QPoint way) {
        constexpr int kSteps = 10;
        press(widget, from);
        for (int step = 1; step <= kSteps; ++step) {
            moveTo(widget, from + way * step / kSteps);
            // Speed is a distance in a time.
            QTest::qWait(1);
        }
    }

    void flick(QWidget& widget, QPoint from, QPoint way) {
        push(widget, from, way);
        lift(widget, from + way);
    }

private:
    [[nodiscard]] auto event(QWidget& widget) const
        -> decltype(QTest::touchEvent(&widget, QTest::createTouchDevice())) {
        static auto* const device = QTest::createTouchDevice();
        return QTest::touchEvent(&widget, device);
    }
};

} // namespace kelvo
