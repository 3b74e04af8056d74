#pragma once

#include <QFont>
#include <QLabel>
#include <QMap>
#include <QString>

namespace kelvo {

/// A label of several lines that remembers how high it is at each width. Nested layouts ask for that again and again,
/// and the answer takes setting the whole text.
class WrappedLabel : public QLabel {
    Q_OBJECT

public:
    using QLabel::QLabel;

    [[nodiscard]] int heightForWidth(int width) const override;

protected:
    /// What is remembered.
    [[nodiscard]] virtual int measuredHeight(int width) const { return QLabel::heightForWidth(width); }

private:
    mutable QString measuredText_;
    mutable QFont measuredFont_;
    mutable QMap<int, int> heights_;
};

} // namespace kelvo
