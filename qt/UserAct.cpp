#include "qt/UserAct.h"

#include "platform/Guarded.h"

#include <utility>
#include <vector>

namespace kelvo {

namespace {

/// An act of the user that is under way, on the stack. Acts nest when one waits by running the event loop.
class UserAct {
public:
    UserAct() {
        if (outermost) return;
        outermost = this;
        emit UserActs::all().begun();
    }
    UserAct(const UserAct&) = delete;
    UserAct& operator=(const UserAct&) = delete;
    ~UserAct() {
        if (outermost != this) return;
        outermost = nullptr;
        emit UserActs::all().ended();
        // The widget that the user acted on is still below on the stack. Asked only now, the toolkit waits for that; a
        // form that had asked it in an inner event loop would have been gone by the end of that loop.
        for (auto& form : discarded_) form.release()->deleteLater();
    }

    void keep(std::unique_ptr<QWidget> form) { discarded_.push_back(std::move(form)); }

    static UserAct* outermost;

private:
    std::vector<std::unique_ptr<QWidget>> discarded_;
};

UserAct* UserAct::outermost = nullptr;

} // namespace

UserActs& UserActs::all() {
    static UserActs acts;
    return acts;
}

void userActed(const std::function<void()>& act, const std::function<void()>& show) {
    const UserAct underWay;
    platform::guarded(act);
    platform::guarded(show);
}

void discardForm(std::unique_ptr<QWidget> form) {
    if (!form || !UserAct::outermost) return;
    form->hide();
    form->setParent(nullptr);
    UserAct::outermost->keep(std::move(form));
}

} // namespace kelvo
