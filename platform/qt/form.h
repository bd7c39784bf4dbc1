#pragma once

#include <QDialog>

#include <string>

class QLineEdit;

// Minimum width in pixels at which a title is readable in full in the title bar that Qt itself
// draws on Wayland; 0 if the platform is not Wayland.
int minTitleBarWidth(const QString& title);

// Asks the desktop to draw attention to this program (by a flashing taskbar entry, for instance)
// unless it is the active program.
void callUser();

// A dialog of fixed size in the middle of the screen.
class Form : public QDialog {
    Q_OBJECT

public:
    // A window without a frame ignores requests to close; Escape calls reject() in every window.
    enum class Frame { TitleAndCloseBox, Title, None };

    // `width` and `height` are those of the client area in twips; on Wayland the window is wider if
    // its title needs more space.
    Form(QWidget* owner, const char* name, const QString& caption, int width, int height,
         Frame frame);

protected:
    void closeEvent(QCloseEvent* event) override;
    // Shows `cause` in a message box with this window's title and selects the contents of
    // `textBox`.
    void rejectInput(QLineEdit* textBox, const std::string& cause);
};
