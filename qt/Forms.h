#pragma once

#include <QWidget>

#include <functional>
#include <map>
#include <memory>
#include <string>

namespace kelvo {

/// Forms by their names, each with what makes its widgets. Texts are still keys, and nothing is bound.
using Forms = std::map<std::string, std::function<std::unique_ptr<QWidget>()>>;

/// The forms of the pane.
[[nodiscard]] Forms paneForms();

} // namespace kelvo
