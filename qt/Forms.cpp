#include "qt/Forms.h"

#include "ui_KelvoTouchDisplayPref.h"
#include "ui_TDCalibrationViewCtl.h"
#include "ui_TDGesturesCellView.h"
#include "ui_TDHardwareInformationViewCtl.h"
#include "ui_TDSettingViewCtl.h"
#include "ui_TDVersionViewCtl.h"

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
        {"TDCalibrationViewCtl", make<Ui::TDCalibrationViewCtl>},
        {"TDGesturesCellView", make<Ui::TDGesturesCellView>},
        {"TDHardwareInformationViewCtl", make<Ui::TDHardwareInformationViewCtl>},
        {"TDSettingViewCtl", make<Ui::TDSettingViewCtl>},
        {"TDVersionViewCtl", make<Ui::TDVersionViewCtl>},
    };
}

} // namespace kelvo
