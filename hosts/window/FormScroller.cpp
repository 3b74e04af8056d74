#include "hosts/window/FormScroller.h"

#include <QLayout>

#include <memory>

namespace kelvo {

namespace {

/// Holds a form at its own size, and knows how small that may get.
class FormHolder : public QWidget {
public:
    explicit FormHolder(QWidget& form) : form_(form) { form.setParent(this); }

    [[nodiscard]] QSize minimumSizeHint() const override {
        const QSize smallest = form_.minimumSizeHint().expandedTo(form_.minimumSize());
        const QLayout* const layout = form_.layout();
        // The wider it is, the less high are its wrapped texts.
        const bool wraps = layout && layout->hasHeightForWidth();
        return {smallest.width(),
                wraps ? layout->minimumHeightForWidth(qMax(width(), smallest.width())) : smallest.height()};
    }

protected:
    void resizeEvent(QResizeEvent*) override { form_.resize(size()); }

private:
    QWidget& form_;
};

} // namespace

FormScroller::FormScroller(QWidget& form) {
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setWidgetResizable(true);
    setWidget(std::make_unique<FormHolder>(form).release());
}

} // namespace kelvo
