// A window that fills the screen and says what the toolkit tells it of touchpads' gestures, clicks and keys: each event
// as one line of JSON with its place on the screen.

#include <QApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QTouchEvent>
#include <QWheelEvent>
#include <QWidget>

#include <cstdio>

namespace {

void say(const char* name, QJsonObject line = {}) {
    line.insert("event", name);
    (void)std::puts(QJsonDocument(line).toJson(QJsonDocument::Compact).constData());
    (void)std::fflush(stdout);
}

QJsonObject at(const QPointF& place) { return {{"x", place.x()}, {"y", place.y()}}; }

const char* nameOf(Qt::NativeGestureType gesture) {
    switch (gesture) {
    case Qt::BeginNativeGesture:
        return "begin";
    case Qt::EndNativeGesture:
        return "end";
    case Qt::PanNativeGesture:
        return "pan";
    case Qt::ZoomNativeGesture:
        return "zoom";
    case Qt::RotateNativeGesture:
        return "rotate";
    case Qt::SwipeNativeGesture:
    case Qt::SmartZoomNativeGesture:
        break;
    }
    return "another gesture";
}

class Window : public QWidget {
public:
    Window() { setAttribute(Qt::WA_AcceptTouchEvents); }

protected:
    bool event(QEvent* event) override {
        switch (event->type()) {
        case QEvent::NativeGesture:
            sayGesture(*static_cast<QNativeGestureEvent*>(event));
            return true;
        case QEvent::TouchBegin:
            say("touch begin");
            return true;
        case QEvent::TouchUpdate:
            return true;
        case QEvent::TouchEnd:
            say("touch end");
            return true;
        case QEvent::TouchCancel:
            say("touch cancel");
            return true;
        case QEvent::WindowActivate:
            say("shown");
            break;
        default:
            break;
        }
        return QWidget::event(event);
    }

    void wheelEvent(QWheelEvent* event) override {
        QJsonObject line = at(event->globalPosition());
        line.insert("dx", event->pixelDelta().x());
        line.insert("dy", event->pixelDelta().y());
        say("wheel", line);
    }

    void mousePressEvent(QMouseEvent* event) override { sayClick("press", *event); }
    void mouseReleaseEvent(QMouseEvent* event) override { sayClick("release", *event); }
    void keyPressEvent(QKeyEvent* event) override { say("key press", {{"sym", qint64{event->nativeVirtualKey()}}}); }
    void keyReleaseEvent(QKeyEvent* event) override {
        say("key release", {{"sym", qint64{event->nativeVirtualKey()}}});
    }

private:
    static void sayGesture(const QNativeGestureEvent& event) {
        QJsonObject line = at(event.globalPosition());
        line.insert("value", event.value());
        line.insert("fingers", event.fingerCount());
        line.insert("dx", event.delta().x());
        line.insert("dy", event.delta().y());
        say(nameOf(event.gestureType()), line);
    }

    static void sayClick(const char* name, const QMouseEvent& event) {
        if (event.source() != Qt::MouseEventNotSynthesized) return;
        QJsonObject line = at(event.globalPosition());
        line.insert("button", static_cast<int>(event.button()));
        say(name, line);
    }
};

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    Window window;
    window.showFullScreen();
    return QApplication::exec();
}
