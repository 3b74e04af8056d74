#pragma once

#include "qt/WrappedLabel.h"

namespace kelvo {

/// A text that says what is wrong, where the settings would be; screen readers speak it as soon as it shows.
class AlertLabel : public WrappedLabel {
    Q_OBJECT

public:
    using WrappedLabel::WrappedLabel;
};

} // namespace kelvo
