#include "DoodleTranslations.h"

#include <QCoreApplication>
#include <QPointer>
#include <QTranslator>

namespace {

QPointer<QTranslator> &installed()
{
    static QPointer<QTranslator> translator;
    return translator;
}

} // namespace

QString DoodleTranslations::directory()
{
    return QStringLiteral(":/io.doodle.board/translations");
}

bool DoodleTranslations::install(const QLocale &locale)
{
    remove();
    auto *translator = new QTranslator(QCoreApplication::instance());
    if (!translator->load(locale, QStringLiteral("doodle"), QStringLiteral("_"), directory()) ||
        !QCoreApplication::installTranslator(translator)) {
        delete translator;
        return false;
    }
    installed() = translator;
    return true;
}

void DoodleTranslations::remove()
{
    if (QTranslator *translator = installed()) {
        QCoreApplication::removeTranslator(translator);
        delete translator;
    }
}
