#pragma once

#include <QList>
#include <QString>
#include <QVariant>
#include <QWidget>

namespace kelvo {

/// The widgets of that type somewhere in `form` whose dynamic property `property` is the name of `widget`.
template <typename Naming>
[[nodiscard]] QList<Naming*> widgetsNaming(const QWidget& form, const char* property, const QWidget& widget) {
    QList<Naming*> found;
    for (Naming* each : form.findChildren<Naming*>()) {
        const QVariant name = each->property(property);
        if (name.isValid() && name.toString() == widget.objectName()) found.append(each);
    }
    return found;
}

} // namespace kelvo
