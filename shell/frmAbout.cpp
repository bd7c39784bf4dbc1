#include "shell/frmAbout.h"

#include "app/state.h"
#include "platform/qt/controls.h"

#include <QLabel>
#include <QPushButton>

namespace {

void addLine(QWidget* parent, const char* name, const QString& text, const TwipsRect& rect,
             const QFont& font, const QColor& colour) {
    QLabel* label = addLabel(parent, name, text, rect, font);
    label->setAlignment(Qt::AlignCenter);
    setColour(label, QPalette::WindowText, colour);
}

} // namespace

frmAbout::frmAbout(QWidget* owner, Purpose purpose)
    : Form(owner, "frmAbout", QString(), 5010, 3105, Frame::None) {
    setColour(this, QPalette::Window, QColor(0, 0, 255));

    const QStringList hand = {QStringLiteral("Comic Sans MS"), QStringLiteral("Comic Neue"),
                              QStringLiteral("Comic Relief"), QStringLiteral("DejaVu Sans")};
    QFont title = firstInstalled(hand, points24);
    title.setBold(true);
    QFont subtitle = firstInstalled({QStringLiteral("Arial"), QStringLiteral("Liberation Sans"),
                                     QStringLiteral("Nimbus Sans"), QStringLiteral("DejaVu Sans")},
                                    points12);
    subtitle.setBold(true);
    QFont link = sansFont(points9_75);
    link.setUnderline(true);
    const QFont version =
        firstInstalled({QStringLiteral("Lucida Console"), QStringLiteral("Liberation Mono"),
                        QStringLiteral("DejaVu Sans Mono")},
                       points9_75);

    const modFunc::State& s = modFunc::state();
    const QString versionText =
        QStringLiteral("Version %1, %2")
            .arg(QString::fromStdString(s.ProgramVersion), QString::fromStdString(s.ProgramDate));
    addLine(this, "Label2", QStringLiteral("QUORVEN"), {960, 0, 3015, 615}, title, Qt::red);
    addLine(this, "Label1", tr("USB Programmer"), {120, 720, 4695, 375}, subtitle, Qt::yellow);
    addLine(this, "lblVersion", versionText, {120, 1080, 4695, 255}, version, Qt::yellow);
    addLine(this, "Label3", tr("Norvane Instruments, Tessel"), {120, 1320, 4695, 495},
            firstInstalled(hand, points12), Qt::green);
    addLine(this, "Label4", QStringLiteral("www.norvane.example"), {120, 1800, 4695, 255}, link,
            Qt::cyan);
    addLine(this, "Label5", QStringLiteral("support@norvane.example"), {120, 2160, 4695, 255}, link,
            Qt::cyan);

    cmdOk = addButton(this, "cmdOk", tr("OK"), {1920, 2520, 855, 375});
    cmdOk->setDefault(true);
    cmdOk->setVisible(purpose == Purpose::About);
    connect(cmdOk, &QPushButton::clicked, this, &frmAbout::cmdOk_Click);
}

void frmAbout::cmdOk_Click() {
    accept();
}

void frmAbout::reject() {
    if (!cmdOk->isHidden())
        QDialog::reject();
}
