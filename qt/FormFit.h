#pragma once

#include "platform/Bundle.h"

#include <QString>
#include <QStringList>
#include <QWidget>

#include <map>
#include <utility>

namespace kelvo {

/// Finds the widest of the texts that a widget may show. A list has as many rows of one form as it has entries, so that
/// the answer is kept for each font and its texts.
class WidestTexts {
public:
    /// Of the bundle's texts of the keys in the dynamic property "mayShow" of `widget`; empty when there are none.
    [[nodiscard]] const QString& of(const QWidget& widget, platform::NSBundle* bundle);

private:
    std::map<std::pair<QString, QStringList>, QString> known_;
};

/// Makes a form that lays nothing out, but stands at its frames, large enough for the texts it may show in this
/// language and font. They are the bundle's texts of the keys in the dynamic property "mayShow" of its labels and
/// pull-downs; a form without that is left as it is. All of the form grows in height alike, and what shows the texts to
/// the width of the widest, but the form never gets narrower than its minimum. From here on it keeps its font, since
/// what stands at frames could not follow another.
void fitFrames(QWidget& form, platform::NSBundle* bundle, WidestTexts& widestTexts);

/// How much larger the letters of `form` are than those that forms are designed for; 1 where they are no larger.
[[nodiscard]] double letterFactor(const QWidget& form);

/// Lets no widget of the form get smaller than it needs in its font. A least size that the form's designer demands
/// takes the place of what the widget itself does; from here on the larger of both counts, whatever the font becomes.
void keepWhole(QWidget& form);

} // namespace kelvo
