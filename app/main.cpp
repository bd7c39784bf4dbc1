// Puts the program together: application, start files, machine, main window.
#include "app/startup.h"
#include "platform/qt/application.h"
#include "platform/qt/qt_machine.h"
#include "shell/mdiMain.h"

#include <exception>

int main(int argc, char** argv) {
    Application application(argc, argv);
    try {
        modFunc::Main();
        QtMachine machine;
        mdiMain window(machine);
        window.Load();
        window.show();
        return application.exec();
    } catch (const std::exception& error) {
        return Application::reportError(error);
    }
}
