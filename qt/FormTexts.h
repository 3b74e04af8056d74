#pragma once

#include "platform/Bundle.h"

#include <QWidget>

namespace kelvo {

/// Replaces the keys that stand in a form where its texts belong by the texts of `bundle`. A key without a text, and
/// every key where there is no bundle, becomes the empty text.
void localizeTexts(QWidget& form, platform::NSBundle* bundle);

} // namespace kelvo
