#pragma once

#include <QComboBox>
#include <QTableWidget>
#include <QVBoxLayout>
#include <QWidget>

namespace kelvo {

/// Says what each gesture does on this desktop: whether it is on, the fingers that make it, what comes of it, and which
/// file says so. Nothing can be changed here.
class GesturesWindow final : public QWidget {
public:
    GesturesWindow();

    /// Reads settings and actions anew, and comes to the front.
    void showAnew();

private:
    void fillDisplays();
    void fillTable();

    QVBoxLayout layout_{this};
    QComboBox displays_;
    QTableWidget table_;
};

} // namespace kelvo
