// Puts the program together: application, data files, machine, main window.
#include "app/startup.h"
#include "app/state.h"
#include "platform/qt/application.h"
#include "platform/qt/qt_machine.h"
#include "platform/qt/termination_posix.h"
#include "platform/qt/text_encoding_posix.h"
#include "shell/mdiMain.h"

#include <algorithm>

int main(int argc, char** argv) {
    OpenStandardDescriptors();
    useUtf8();
    argc = std::min(argc, 1); // no options are accepted, not even Qt's own
    Application application(argc, argv);
    try {
        modFunc::Main();
        QtMachine machine(modFunc::state().AppPath);
        HandleSignals(modFunc::WriteSettings);
        mdiMain window(machine);
        window.Load();
        window.show();
        return application.exec();
    } catch (...) {
        return Application::reportError();
    }
}
