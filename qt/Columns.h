#pragma once

#include <QWidget>

namespace kelvo {

/// Columns in a scroll area stand below each other where it is too narrow for all of them side by side, so that nobody
/// has to scroll sideways. A scroll area of `form` names the layouts of its columns in the property "columns".
void stackColumnsWhereNarrow(QWidget& form);

} // namespace kelvo
