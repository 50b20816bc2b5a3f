// The one entry point of the dialogs' library. The host loads the library only to call
// it, so a host without a display never needs Qt. The dialogs run on the caller's thread:
// in a Qt application the application is used as it is; elsewhere an application lives
// for the call.
#include "effects/dialogs/DialogFactory.h"

#include <QApplication>
#include <QThread>

#include <cstdlib>
#include <memory>

namespace {

// Whether Qt can reach a display: a platform named to Qt, or a window system to connect
// to. Without one, making the application would end the process.
bool displayAvailable()
{
    for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"}) {
        const char* value = std::getenv(name);
        if (value && *value) return true;
    }
    return false;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) qx::HRESULT
qxShowPropertiesDialog(const qx::dialogs::DialogRequest* request)
{
    using namespace qx;
    if (!request) return E_POINTER;
    if (qx::dialogs::dialogResource(request->effectId) == 0) return S_OK;
    std::unique_ptr<QApplication> ownApplication;
    if (QCoreApplication* running = QCoreApplication::instance()) {
        // Widgets need a widget application, on its own thread.
        if (!qobject_cast<QApplication*>(running) || running->thread() != QThread::currentThread()) return E_FAIL;
    } else {
        if (!displayAvailable()) return E_FAIL;
        static int argc = 1;
        static char name[] = "qxdynamiceffects";
        static char* argv[] = {name, nullptr};
        ownApplication = std::make_unique<QApplication>(argc, argv);
        QApplication::setStyle("Fusion");
    }
    return qx::dialogs::runDialog(*request);
}
