// The Quick board's pictures: plain surfaces at the item's size that the item
// paints, and the text input an entry opens over the board.
#include "DoodleBoard_p.h"

#include <doodle/board/DoodleDrawInput.h>
#include <doodle/support/DoodleLog_p.h>

#include <QPainter>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>

#include <cmath>

namespace {

constexpr int kTextFieldWidth = 150;
constexpr int kTextFieldExtraHeight = 10;

// A one-line input that tells the board when Return finishes it, the focus
// leaves it or Escape abandons it.
const char kTextInputQml[] = R"(
import QtQuick
TextInput {
    signal done(bool cancelled)
    property bool reported: false
    function report(cancelled) { if (!reported) { reported = true; done(cancelled) } }
    onEditingFinished: report(false)
    Keys.onEscapePressed: report(true)
}
)";

} // namespace

DoodleQuickCanvas::DoodleQuickCanvas(DoodleBoard *item) : m_item(item)
{
    const auto size = [this] { return boardSize().toSize(); };
    const auto changed = [item](const QRect &area) {
        item->d->changed(area.translated(item->d->frame().topLeft()));
    };
    m_cache.setHost(size, changed);
    for (DoodleSurface &preview : m_previews)
        preview.setHost(size, changed);
}

QSizeF DoodleQuickCanvas::boardSize() const
{
    return QSizeF(m_item->d->frame().size());
}

DoodleSurface *DoodleQuickCanvas::previewSurface(quint64 index)
{
    return index < std::size(m_previews) ? &m_previews[index] : nullptr;
}

void DoodleQuickCanvas::cleanPreview(quint64 index, bool release)
{
    if (DoodleSurface *preview = previewSurface(index))
        preview->clear(release);
    if (index == m_textIndex)
        closeTextEntry();
}

void DoodleQuickCanvas::closeTextEntry()
{
    if (QQuickItem *input = m_textInput.data()) {
        m_textInput.clear();
        input->setVisible(false);
        // Deferred: the input may be the sender of the signal that led here.
        input->deleteLater();
    }
}

void DoodleQuickCanvas::openTextEntry(const QPointF &point, double textSize, const QColor &color,
                                      quint64 index)
{
    cleanPreview(index, true);
    QQmlEngine *engine = qmlEngine(m_item);
    if (!engine) {
        qCWarning(lcDoodle, "the board is not in a QML engine; no text entry");
        return;
    }
    QQmlComponent component(engine);
    component.setData(kTextInputQml, QUrl());
    auto *input = qobject_cast<QQuickItem *>(component.create(qmlContext(m_item)));
    if (!input) {
        qCWarning(lcDoodle).noquote()
            << "the text entry could not be made:" << component.errorString();
        return;
    }
    const double size = DoodleDrawInput::textSize(textSize, boardSize()).value_or(0.0);
    input->setParentItem(m_item);
    const QPointF at = QPointF(m_item->d->frame().topLeft()) + point;
    input->setPosition(QPointF(std::round(at.x()), std::round(at.y())));
    input->setSize(QSizeF(kTextFieldWidth, std::round(size) + kTextFieldExtraHeight));
    input->setProperty("font", DoodleDrawInput::systemFont(size));
    if (color.isValid())
        input->setProperty("color", color);
    // The input is made from QML: its signal is known by name only.
    QObject::connect(input, SIGNAL(done(bool)), m_item, SLOT(finishText(bool)));
    m_textInput = input;
    m_textIndex = index;
    input->forceActiveFocus(Qt::OtherFocusReason);
}

QString DoodleQuickCanvas::textEntryText() const
{
    return m_textInput ? m_textInput->property("text").toString() : QString();
}

void DoodleQuickCanvas::paint(QPainter &painter, const QRect &area, bool live) const
{
    m_cache.paint(painter, area);
    const quint64 layers = live ? kDoodleLayerCount : kDoodleRemoteLayer;
    for (quint64 index = 0; index < layers; ++index)
        m_previews[index].paint(painter, area);
}
