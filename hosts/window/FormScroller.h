#pragma once

#include <QScrollArea>

namespace kelvo {

/// Gives a form all the room there is, and scrolls it once that is less than the form can do with. A plain scroll area
/// would scroll a form with wrapped texts as soon as there is less than it prefers.
class FormScroller : public QScrollArea {
public:
    /// Takes over the form.
    explicit FormScroller(QWidget& form);
};

} // namespace kelvo
