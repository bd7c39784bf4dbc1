#include "fuzz/fuzz.h"
#include "shell/help/rich_text_reader.h"

#include <QGuiApplication>

// Fontconfig refers to parts of its patterns by offsets, which the leak checker does not follow.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig";
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static char name[] = "fuzz", *argv[] = {name, nullptr};
    static int argc = 1;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static const QGuiApplication application(argc, argv);
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& message) {
        check(type == QtDebugMsg || type == QtInfoMsg, message.toUtf8().constData());
    });
    const std::string file = textOf(data, size);
    QTextDocument document;
    check(RichTextReader::Read(file, document, 1) == file.starts_with("{\\rtf"),
          "rich text is recognised by its beginning");
    document.setTextWidth(640);
    check(document.size().height() < 8'000'000, "Qt can lay it out");
    check(document.toPlainText().isValidUtf16(), "the text is valid UTF-16");
    return 0;
}
