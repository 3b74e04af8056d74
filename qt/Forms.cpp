#include "qt/Forms.h"

#include "ui_KelvoTouchDisplayPref.h"

namespace kelvo {

namespace {

template <typename Form>
std::unique_ptr<QWidget> make() {
    auto widget = std::make_unique<QWidget>();
    Form().setupUi(widget.get());
    return widget;
}

} // namespace

Forms paneForms() {
    return {
        {"KelvoTouchDisplayPref", make<Ui::KelvoTouchDisplayPref>},
    };
}

} // namespace kelvo
