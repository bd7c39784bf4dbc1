#include "shell/help/rich_text_reader.h"

#include "fuzz/fuzz.h"

#include <QGuiApplication>

#include <algorithm>

namespace {

void failOnWarning(QtMsgType type, const QMessageLogContext&, const QString& message) {
    check(type == QtDebugMsg || type == QtInfoMsg, message.toUtf8().constData());
}

const QGuiApplication& application() {
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static const QGuiApplication instance(argc, argv);
    qInstallMessageHandler(failOnWarning);
    return instance;
}

} // namespace

// Fontconfig's patterns point to each other by offsets, which the leak checker does not follow.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig";
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const QGuiApplication& needed = application();
    Q_UNUSED(needed)
    const std::string file = textOf(data, size);
    QTextDocument document;
    check(RichTextReader::Read(file, document, 1) == file.starts_with("{\\rtf"),
          "rich text is recognised by its beginning");
    document.setTextWidth(640);
    check(document.size().height() < 8'000'000, "Qt can lay it out");
    const auto allowed = [](QChar c) { return c == u'\t' || c == u'\n' || !c.isNonCharacter(); };
    const QString text = document.toPlainText();
    check(std::ranges::all_of(text, allowed) && text.isValidUtf16(), "there is only text");
    return 0;
}
