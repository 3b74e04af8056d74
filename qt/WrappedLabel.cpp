#include "qt/WrappedLabel.h"

namespace kelvo {

int WrappedLabel::heightForWidth(int width) const {
    if (measuredText_ != text() || measuredFont_ != font()) {
        measuredText_ = text();
        measuredFont_ = font();
        heights_.clear();
    }
    const auto known = heights_.constFind(width);
    if (known != heights_.constEnd()) return *known;
    return *heights_.insert(width, measuredHeight(width));
}

} // namespace kelvo
