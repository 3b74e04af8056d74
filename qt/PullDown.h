#pragma once

#include <QComboBox>
#include <QString>

#include <functional>

namespace kelvo {

/// A button that shows a title and opens a menu of choices. It can be deaf to the user, and look like mere text.
class PullDown : public QComboBox {
    Q_OBJECT
    Q_PROPERTY(QString title READ title WRITE setTitle)

public:
    /// What the program makes a pop-up wider than its title.
    static constexpr int kMargin = 25;

    explicit PullDown(QWidget* parent = nullptr);

    [[nodiscard]] QString title() const { return title_; }
    void setTitle(const QString& title);
    /// Asked before the user opens the menu or steps through it.
    void setOpensMenu(std::function<bool()> opensMenu) { opensMenu_ = std::move(opensMenu); }
    /// Without border and arrow it looks like text, and then it takes no focus.
    void setLook(bool isBordered, bool hasArrow);

    [[nodiscard]] bool looksLikeText() const { return !isBordered_ && !hasArrow_; }

    /// How wide the program makes it for `title`: whatever a style needs, and never less than the platform's own.
    [[nodiscard]] int frameWidthFor(const QString& title) const;
    /// How wide it has to be to show `title` whole.
    [[nodiscard]] int widthFor(const QString& title) const;
    /// How wide it has to be to show `title` whole in the smallest font that it takes where it is narrower than that.
    [[nodiscard]] int leastWidthFor(const QString& title) const;
    /// The width of `title` alone.
    [[nodiscard]] int textWidthOf(const QString& title) const;

    void showPopup() override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    [[nodiscard]] QRect textRectIn(const QRect& rect) const;
    [[nodiscard]] QRect titleRect() const;
    [[nodiscard]] QFont fontFor(int room) const;
    void drawBareTitle();
    void prepareMenu();

    QString title_;
    std::function<bool()> opensMenu_ = [] { return true; };
    bool isBordered_ = true;
    bool hasArrow_ = true;
    bool isMenuPrepared_ = false;
};

} // namespace kelvo
