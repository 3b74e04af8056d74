#pragma once

#include <QObject>

#include <functional>

namespace kelvo {

/// A control that the user moves from position to position. Of positions that come at once, as they do when they had to
/// wait, only the newest is acted on: after all the moves that are there, and before any press, release or key.
class MovedControl final : public QObject {
public:
    /// `act` acts on the position that the control has come to. It is not called any more when this is gone.
    explicit MovedControl(std::function<void()> act);

    /// The user moved the control.
    void moved();

private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void actOnNewest();

    std::function<void()> act_;
    bool hasMoved_ = false;
};

} // namespace kelvo
