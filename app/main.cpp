// Puts the program together: application, start files, machine, main window.
#include "app/startup.h"
#include "app/state.h"
#include "functions/device_run.h"
#include "platform/qt/application.h"
#include "platform/qt/qt_machine.h"
#include "platform/qt/sudden_end_posix.h"
#include "platform/qt/text_encoding_posix.h"
#include "shell/mdiMain.h"

int main(int argc, char** argv) {
    useUtf8();
    Application application(argc, argv);
    try {
        modFunc::Main();
        QtMachine machine(modFunc::state().AppPath);
        application.beforeReport = modFunc::DeviceRun::PowerDownIfInProgress;
        const EndSignals endSignals([&application] {
            modFunc::DeviceRun::PowerDownIfInProgress();
            modFunc::WriteSettings();
            application.endNow(0);
        });
        mdiMain window(machine);
        window.Load();
        window.show();
        return application.exec();
    } catch (...) {
        return Application::reportError();
    }
}
