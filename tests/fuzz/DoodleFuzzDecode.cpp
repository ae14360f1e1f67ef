// Fuzz harness: decodes arbitrary bytes as an action text and checks that what
// decodes re-encodes to a text that decodes again and is then stable.
#include <doodle/model/DoodleTranslate.h>

#include <QtGlobal>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

// Keeps the log texts being formatted (that code runs too) without printing them.
void dropMessage(QtMsgType, const QMessageLogContext &, const QString &) {}

[[noreturn]] void fail(const char *what, const QString &text)
{
    std::fprintf(stderr, "doodle fuzz: %s\n%s\n", what, text.left(2000).toUtf8().constData());
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    qInstallMessageHandler(&dropMessage);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString input = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    const DoodleActionPtr action = DoodleTranslate::doodleActionFromString(input);
    if (!action)
        return 0;
    // "" when a decoded number is infinite (a huge width, say): nothing to check.
    const QString first = DoodleTranslate::stringFromDoodleAction(action);
    if (first.isEmpty())
        return 0;
    const DoodleActionPtr again = DoodleTranslate::doodleActionFromString(first);
    if (!again)
        fail("the encoder's own text does not decode", first);
    // One pass normalises (numbers become strings, nested objects become
    // texts, detail texts that held infinities become zeros); after that the
    // text form must be a fixed point.
    const QString second = DoodleTranslate::stringFromDoodleAction(again);
    const DoodleActionPtr third = DoodleTranslate::doodleActionFromString(second);
    if (!third || DoodleTranslate::stringFromDoodleAction(third) != second)
        fail("the text form is not stable under decode and encode", second);
    return 0;
}
