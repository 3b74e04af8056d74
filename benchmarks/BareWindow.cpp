// A window with as many controls of the same kinds as the settings window has, and nothing behind them.

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QSlider>
#include <QStackedWidget>
#include <QTabWidget>

#include <memory>

namespace {

constexpr int kGestures = 13;

/// As long as those that explain the settings.
constexpr char kExplanation[] = "How far apart the two taps of a double click may be. A wider range helps unsteady "
                                "hands; a narrower one tells taps on neighbouring things apart.";

/// A widget or layout for another one to own.
template <typename Part, typename... Arguments>
Part& made(Arguments... arguments) {
    return *std::make_unique<Part>(arguments...).release();
}

template <typename Widget, typename... Arguments>
void add(QGridLayout& layout, int count, Arguments... arguments) {
    for (int i = 0; i < count; ++i) layout.addWidget(&made<Widget>(arguments...));
}

void addExplanation(QGridLayout& layout) {
    auto& label = made<QLabel>(kExplanation);
    label.setWordWrap(true);
    layout.addWidget(&label);
}

QGridLayout& newPage(QStackedWidget& pages) {
    auto& page = made<QWidget>();
    pages.addWidget(&page);
    return made<QGridLayout>(&page);
}

QGridLayout& newTab(QTabWidget& tabs) {
    auto& page = made<QWidget>();
    tabs.addTab(&page, "Tab");
    return made<QGridLayout>(&page);
}

void fillCalibration(QGridLayout& page) {
    add<QRadioButton>(page, 2, "Choice");
    add<QLabel>(page, 4, "Label");
    add<QLineEdit>(page, 2, "1920");
    add<QPushButton>(page, 1, "Start");
}

QWidget& newGestureList() {
    auto& list = made<QWidget>();
    auto& rows = made<QGridLayout>(&list);
    for (int row = 0; row < kGestures; ++row) {
        auto& actions = made<QComboBox>();
        actions.addItems({"Swipe with two fingers", "Swipe with three fingers"});
        rows.addWidget(&made<QCheckBox>(), row, 0);
        rows.addWidget(&made<QLabel>("Gesture"), row, 1);
        rows.addWidget(&actions, row, 2);
    }
    return list;
}

void fillTouch(QGridLayout& page) {
    auto& tabs = made<QTabWidget>();
    page.addWidget(&tabs);
    QGridLayout& clicks = newTab(tabs);
    for (int group = 0; group < 4; ++group) {
        auto& box = made<QGroupBox>("Group");
        clicks.addWidget(&box, group / 3, group % 3);
        auto& layout = made<QGridLayout>(&box);
        addExplanation(layout);
        add<QLabel>(layout, 2, "Label");
        if (group < 3) {
            add<QSlider>(layout, 1, Qt::Horizontal);
            add<QWidget>(layout, 1);
        }
        if (group < 2) add<QPushButton>(layout, 1, "Normal");
        if (group == 0) add<QLineEdit>(layout, 1, "32");
        if (group == 3) add<QCheckBox>(layout, 1, "Right click");
    }
    auto& area = made<QScrollArea>();
    area.setWidget(&newGestureList());
    newTab(tabs).addWidget(&area);
}

void fillHardware(QGridLayout& page) {
    auto& tabs = made<QTabWidget>();
    page.addWidget(&tabs);
    QGridLayout& rotation = newTab(tabs);
    addExplanation(rotation);
    add<QPushButton>(rotation, 4, "90");
}

} // namespace

int main(int argc, char* argv[]) {
    const QApplication application(argc, argv);
    QMainWindow window;
    auto& content = made<QWidget>();
    window.setCentralWidget(&content);
    auto& layout = made<QGridLayout>(&content);
    auto& pages = made<QStackedWidget>();
    for (int chooser = 0; chooser < 2; ++chooser) {
        auto& choices = made<QComboBox>();
        choices.addItems({"First", "Second", "Third", "Fourth"});
        layout.addWidget(&choices);
    }
    add<QLabel>(layout, 2, "Label");
    for (int i = 0; i < 2; ++i) addExplanation(layout);
    layout.addWidget(&pages);
    add<QCheckBox>(layout, 1, "Show in the status bar");

    fillCalibration(newPage(pages));
    fillTouch(newPage(pages));
    fillHardware(newPage(pages));
    add<QLabel>(newPage(pages), 2, "Version");
    pages.setCurrentIndex(1);

    window.resize(920, 740);
    window.show();
    return QApplication::exec();
}
