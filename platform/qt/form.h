#pragma once

#include <QDialog>

// A dialog of fixed size in the middle of the screen.
class Form : public QDialog {
    Q_OBJECT

public:
    enum class Frame { TitleAndCloseBox, Title, Bare };

    // `width` and `height` of the client area in twips.
    Form(QWidget* owner, const char* name, const QString& caption, int width, int height,
         Frame frame);

protected:
    void showEvent(QShowEvent* event) override;
};
