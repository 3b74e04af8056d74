#pragma once

#include "qt/Pictograms.h"

#include <QString>
#include <QVariantAnimation>
#include <QWidget>

#include <memory>

namespace kelvo {

/// Shows a pictogram, as large as there is room for. One that shows how to use what stands beside it is smaller; while
/// the pointer or the keyboard is there, it takes all its room and moves a few times.
///
/// It is for the eye alone: whatever it shows stands beside it in words, so that assistive technology passes it over.
class PictogramView : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QString pictogram READ pictogram WRITE setPictogram)

public:
    explicit PictogramView(QWidget* parent = nullptr);

    /// Where the pictures come from. Without, nothing is shown.
    void setPictograms(std::shared_ptr<Pictograms> pictograms);

    /// The name of the pictogram; empty for none.
    [[nodiscard]] QString pictogram() const;
    void setPictogram(const QString& name);
    /// Shows the pictogram of the choice that reads so in the user's language, if there is one.
    void setPicturedText(const QString& text);

    /// Moves while `place`, which must outlive this, is pointed at or something in it has the focus.
    void moveAlongWith(QWidget& place);
    [[nodiscard]] bool isAwake() const { return isPointedAt_ || hasFocusInside_; }

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void setAwake(bool isPointedAt, bool hasFocusInside);
    void grow(QAbstractAnimation::Direction direction);
    void move();
    [[nodiscard]] QRectF place() const;

    std::shared_ptr<Pictograms> pictograms_;
    QString name_;
    QString picturedText_;
    QWidget* usedPlace_ = nullptr;
    bool isPointedAt_ = false;
    bool hasFocusInside_ = false;
    /// From its usual size, 0, to all there is room for, 1.
    QVariantAnimation growth_{this};
    QVariantAnimation motion_{this};
};

} // namespace kelvo
