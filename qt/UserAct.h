#pragma once

#include <QObject>
#include <QWidget>

#include <functional>
#include <memory>

namespace kelvo {

/// The user did something to a widget: `act` tells the model, and `show` lets the widget show what the model made of
/// it, which is what it was before if the model refused.
void userActed(
    const std::function<void()>& act, const std::function<void()>& show = [] {});

/// Tells of everything that the user does to a widget. What comes of it by way of another act belongs to it.
class UserActs : public QObject {
    Q_OBJECT

public:
    static UserActs& all();

signals:
    void begun();
    /// The model and the widgets have come to rest.
    void ended();
};

/// Destroys a form. While the user acts, one of its widgets may be handling that; then the form only leaves the screen,
/// and goes when the toolkit is done with the act.
void discardForm(std::unique_ptr<QWidget> form);

} // namespace kelvo
