#pragma once

#include "qt/FormBinder.h"
#include "qt/ToolkitPlatform.h"

#include <QTest>
#include <QVBoxLayout>
#include <QWidget>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace kelvo {

/// Publishes what a test gives it, and records which actions fired.
class Owner : public platform::NSNibOwner {
public:
    std::vector<platform::NSOutlet> published;
    std::vector<std::string> selectors;
    std::vector<std::string> fired;

    [[nodiscard]] std::vector<platform::NSOutlet> outlets() override { return published; }
    [[nodiscard]] std::vector<platform::NSNibAction> actions() override {
        std::vector<platform::NSNibAction> actions;
        for (const std::string& selector : selectors) {
            actions.push_back({selector, [this, selector](platform::NSControl&) { fired.push_back(selector); }});
        }
        return actions;
    }
};

/// A form of the widgets that a test adds, one below the other.
class FormFixture : public testing::Test {
protected:
    template <typename Widget>
    Widget& add(const char* name, const char* action = nullptr) {
        auto widget = std::make_unique<Widget>();
        widget->setObjectName(name);
        if (action) widget->setProperty("action", action);
        rows_->addWidget(widget.get());
        return *widget.release();
    }

    void bind() {
        const FormBinder binder("TestForm", form_, owner_,
                                [this](const platform::NSView& view) { return widgetOf_(view); });
        binding_.emplace(binder.bind(view_));
    }

    /// What a form and an owner that do not fit say about it.
    std::string misfit() {
        try {
            bind();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    }

    void show() {
        form_.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&form_));
    }

    ToolkitPlatform platform_;
    Owner owner_;
    platform::NSView view_;
    QWidget form_;
    QVBoxLayout* rows_ = std::make_unique<QVBoxLayout>(&form_).release();
    WidgetOfView widgetOf_ = [](const platform::NSView&) { return nullptr; };
    std::optional<FormBinding> binding_;
};

} // namespace kelvo
