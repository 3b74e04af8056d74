#pragma once

#include "platform/Bundle.h"

#include <QWidget>

namespace kelvo {

/// Replaces the keys that stand in a form where its texts belong by the texts of `bundle`. A key without a text, and
/// every key where there is no bundle, becomes the empty text. The form is laid out the way that language is written.
void localizeTexts(QWidget& form, platform::NSBundle* bundle);

/// The bundle's text of `key`; empty when it has none, or when there is no bundle.
[[nodiscard]] QString textFor(const QString& key, platform::NSBundle* bundle);

/// Which way the language of the bundle's texts is written, as its table says; from the left where it says nothing.
[[nodiscard]] Qt::LayoutDirection writingDirection(platform::NSBundle* bundle);

} // namespace kelvo
