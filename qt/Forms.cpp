#include "qt/Forms.h"

#include "forms/ui_KelvoTouchDisplayPref.h"
#include "forms/ui_TDCalibrationViewCtl.h"
#include "forms/ui_TDGesturesCellView.h"
#include "forms/ui_TDHardwareInformationViewCtl.h"
#include "forms/ui_TDSettingViewCtl.h"
#include "forms/ui_TDVersionViewCtl.h"

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
