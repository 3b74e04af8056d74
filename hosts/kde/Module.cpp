#include "hosts/QtHostPlatform.h"
#include "hosts/kde/PaneView.h"
#include "qt/MenuPlaceNote.h"
#include "qt/ShownDisplay.h"

#include <KCModule>
#include <KPluginFactory>

#include <QLabel>
#include <QVBoxLayout>

#include <dlfcn.h>

#include <exception>
#include <filesystem>

namespace {

/// The bundle lies at the same place to the plug-in in the build folder and where it is installed.
std::string installedPanePath() {
    Dl_info plugIn{};
    ::dladdr(reinterpret_cast<const void*>(&installedPanePath), &plugIn);
    const auto folder = std::filesystem::path(plugIn.dli_fname).parent_path();
    return (folder / KELVO_PANE_FROM_PLUGIN).lexically_normal();
}

/// A pane with the services that it works on, which all panes share and which go with the last.
struct LoadedPane {
    LoadedPane() {
        static std::weak_ptr<kelvo::QtHostPlatform> shared;
        host = shared.lock();
        if (!host) shared = host = std::make_shared<kelvo::QtHostPlatform>("kelvo-touch-display", installedPanePath());
        pane = host->loadPane();
    }

    std::shared_ptr<kelvo::QtHostPlatform> host;
    std::unique_ptr<platform::NSPreferencePane> pane;
};

std::unique_ptr<QWidget> makePaneView() {
    const auto loaded = std::make_shared<LoadedPane>();
    auto view =
        std::make_unique<kelvo::PaneView>(std::shared_ptr<platform::NSPreferencePane>(loaded, loaded->pane.get()),
                                          loaded->host->nibs(), loaded->host->runLoop());
    // Not the view, so that sheets stay with the pane.
    if (QWidget* const form = view->form()) {
        loaded->host->application().setWindow(*form);
        // The form owns what stands beside its pane.
        const std::string folder = kelvo::panePreferenceFolder(loaded->host->bundle());
        static_cast<void>(std::make_unique<kelvo::ShownDisplay>(*form, folder).release());
        auto menuPlace = std::make_unique<kelvo::MenuPlaceNote>(*form);
        menuPlace.release()->ask(QDBusConnection::sessionBus());
    }
    return view;
}

std::unique_ptr<QWidget> makeApology(const char* reason) {
    auto label =
        std::make_unique<QLabel>(QStringLiteral("The touchscreen settings cannot be shown.\n\n%1").arg(reason));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignCenter);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

std::unique_ptr<QWidget> makeContents() {
    try {
        return makePaneView();
    } catch (const std::exception& error) {
        return makeApology(error.what());
    }
}

} // namespace

/// The pane as a module of System Settings. It is a new object at each visit. The pane applies at once, so there is
/// nothing to apply or to reset.
class KelvoTouchDisplayModule : public KCModule {
    Q_OBJECT

public:
#if KELVO_KDE_MAJOR >= 6
    KelvoTouchDisplayModule(QObject* parent, const KPluginMetaData& metaData) : KCModule(parent, metaData) {
        fill(*widget());
    }
#else
    KelvoTouchDisplayModule(QWidget* parent, const QVariantList& arguments) : KCModule(parent, arguments) {
        fill(*this);
    }
#endif

    /// Reset, which does not show the module.
    void load() override {}

private:
    void fill(QWidget& place) {
        setButtons(NoAdditionalButton);
        auto layout = std::make_unique<QVBoxLayout>(&place);
        layout->setContentsMargins({});
        layout->addWidget(makeContents().release());
        static_cast<void>(layout.release()); // The place owns it.
    }
};

K_PLUGIN_CLASS_WITH_JSON(KelvoTouchDisplayModule, "kcm_kelvo_touch_display.json")

#include "Module.moc"
