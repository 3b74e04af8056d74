#include "qt/FormBinding.h"

namespace kelvo {

FormBinding::FormBinding() : connections_(std::make_unique<QObject>()) {}

} // namespace kelvo
