#include "qt/Accessibility.h"

#include "qt/AlertLabel.h"
#include "qt/CanvasView.h"
#include "qt/PullDown.h"
#include "qt/RadioGroup.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QAccessibleWidget>
#include <QLabel>
#include <QVariant>

#include <memory>

namespace kelvo {

namespace {

/// A button that can be pressed without a pointer, or a mere picture where presses are of no use.
class AccessibleCanvas final : public QAccessibleWidget {
public:
    explicit AccessibleCanvas(CanvasView& canvas)
        : QAccessibleWidget(&canvas, canvas.focusPolicy() == Qt::NoFocus ? QAccessible::Graphic : QAccessible::Button),
          canvas_(canvas) {}

    [[nodiscard]] QStringList actionNames() const override {
        QStringList names = QAccessibleWidget::actionNames();
        if (role() == QAccessible::Button) names.prepend(pressAction());
        return names;
    }

    void doAction(const QString& name) override {
        if (name == pressAction()) {
            canvas_.click();
        } else {
            QAccessibleWidget::doAction(name);
        }
    }

private:
    CanvasView& canvas_;
};

/// Like the toolkit's own combo boxes it goes by what is chosen, and by the label of what that is chosen for; without
/// border and arrow it is a label itself.
class AccessiblePullDown final : public QAccessibleWidget {
public:
    explicit AccessiblePullDown(PullDown& pullDown) : QAccessibleWidget(&pullDown), pullDown_(pullDown) {}

    [[nodiscard]] QAccessible::Role role() const override {
        return pullDown_.looksLikeText() ? QAccessible::StaticText : QAccessible::ComboBox;
    }

    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.expandable = !pullDown_.looksLikeText();
        state.expanded = state.expandable && pullDown_.view()->isVisible();
        return state;
    }

    [[nodiscard]] QString text(QAccessible::Text which) const override {
        switch (which) {
        case QAccessible::Name:
        case QAccessible::Value:
            return pullDown_.title().isEmpty() ? pullDown_.accessibleName() : pullDown_.title();
        case QAccessible::Description:
            return pullDown_.accessibleName();
        default:
            return QAccessibleWidget::text(which);
        }
    }

    [[nodiscard]] QVector<QPair<QAccessibleInterface*, QAccessible::Relation>>
    relations(QAccessible::Relation match) const override {
        auto relations = QAccessibleWidget::relations(match);
        auto* const label = pullDown_.parentWidget()->findChild<QLabel*>(pullDown_.property("namedBy").toString());
        if (label && (match & QAccessible::Label)) {
            relations.append({QAccessible::queryAccessibleInterface(label), QAccessible::Label});
        }
        return relations;
    }

    [[nodiscard]] int childCount() const override { return pullDown_.looksLikeText() ? 0 : 1; }

    [[nodiscard]] QAccessibleInterface* child(int index) const override {
        return index == 0 && childCount() > 0 ? QAccessible::queryAccessibleInterface(pullDown_.view()) : nullptr;
    }

    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override {
        return childCount() > 0 && child && child->object() == pullDown_.view() ? 0 : -1;
    }

    [[nodiscard]] QStringList actionNames() const override {
        if (pullDown_.looksLikeText()) return {};
        return QStringList{showMenuAction(), pressAction()} + QAccessibleWidget::actionNames();
    }

    void doAction(const QString& name) override {
        if (name != showMenuAction() && name != pressAction()) {
            QAccessibleWidget::doAction(name);
        } else if (pullDown_.view()->isVisible()) {
            pullDown_.hidePopup();
        } else {
            pullDown_.showPopup();
        }
    }

private:
    PullDown& pullDown_;
};

/// A text that is spoken as soon as it shows.
class AccessibleAlert final : public QAccessibleWidget {
public:
    explicit AccessibleAlert(AlertLabel& label) : QAccessibleWidget(&label, QAccessible::AlertMessage), label_(label) {}

    [[nodiscard]] QString text(QAccessible::Text which) const override {
        return which == QAccessible::Name ? label_.text() : QAccessibleWidget::text(which);
    }

private:
    AlertLabel& label_;
};

/// What has a name that is said of all that is in it.
class AccessibleGroup final : public QAccessibleWidget {
public:
    explicit AccessibleGroup(RadioGroup& group) : QAccessibleWidget(&group, QAccessible::Grouping) {}
};

/// The toolkit owns what it is given.
template <typename Interface, typename Widget>
QAccessibleInterface* make(Widget& widget) {
    return std::make_unique<Interface>(widget).release();
}

QAccessibleInterface* interfaceFor(const QString& /*className*/, QObject* object) {
    if (auto* canvas = qobject_cast<CanvasView*>(object)) return make<AccessibleCanvas>(*canvas);
    if (auto* pullDown = qobject_cast<PullDown*>(object)) return make<AccessiblePullDown>(*pullDown);
    if (auto* alert = qobject_cast<AlertLabel*>(object)) return make<AccessibleAlert>(*alert);
    if (auto* group = qobject_cast<RadioGroup*>(object)) return make<AccessibleGroup>(*group);
    return nullptr;
}

} // namespace

void describeOwnWidgets() { QAccessible::installFactory(interfaceFor); }

} // namespace kelvo
