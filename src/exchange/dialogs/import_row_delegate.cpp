#include "import_row_delegate.h"

#include "import_decision_model.h"

#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionButton>
#include <QTextDocument>

namespace exchange {

namespace {

using Model = ImportDecisionModel;

bool isRecordRow(const QModelIndex& index)
{
    return index.parent().isValid();
}

const QWidget* widgetOf(const QStyleOptionViewItem& option)
{
    return option.widget;
}

QStyle* styleOf(const QStyleOptionViewItem& option)
{
    return option.widget ? option.widget->style() : QApplication::style();
}

} // namespace

ImportRowDelegate::ImportRowDelegate(QObject* parent) : QStyledItemDelegate(parent)
{}

void ImportRowDelegate::paintRichText(QPainter* painter, const QStyleOptionViewItem& option,
                                      const QString& html, const QRect& rect) const
{
    QTextDocument document;
    document.setDefaultFont(option.font);
    document.setDocumentMargin(0);
    document.setHtml(html);
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette = option.palette;
    context.palette.setColor(QPalette::Text, option.state & QStyle::State_Selected
                                                 ? option.palette.color(QPalette::HighlightedText)
                                                 : option.palette.color(QPalette::Text));
    painter->save();
    const int top = rect.top() + qMax(0, (rect.height() - int(document.size().height())) / 2);
    painter->translate(rect.left(), top);
    painter->setClipRect(QRect(0, 0, rect.width(), rect.height()));
    document.documentLayout()->draw(painter, context);
    painter->restore();
}

void ImportRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const
{
    if (!isRecordRow(index)) {
        QStyleOptionViewItem group = option;
        group.font.setBold(true);
        QStyledItemDelegate::paint(painter, group, index);
        return;
    }
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);
    QStyle* style = styleOf(option);
    // Background and selection, without the text: the columns draw their own.
    item.text.clear();
    item.icon = QIcon();
    style->drawControl(QStyle::CE_ItemViewItem, &item, painter, widgetOf(option));

    const QRect cell = option.rect.adjusted(4, 2, -4, -2);
    switch (index.column()) {
    case Model::ElementColumn: {
        QRect text = cell;
        const QIcon icon = index.data(Qt::DecorationRole).value<QIcon>();
        if (!icon.isNull()) {
            const int side = 16;
            icon.paint(painter, QRect(cell.left(), cell.top() + 1, side, side));
            text.setLeft(cell.left() + side + 4);
        }
        const QString warning = index.data(Model::WarningRole).toString();
        const QString second = warning.isEmpty()
                                   ? QStringLiteral("<font color='gray'>") +
                                         index.data(Qt::UserRole).toString().toHtmlEscaped() +
                                         QStringLiteral("</font>")
                                   : warning;
        paintRichText(painter, option,
                      index.data().toString().toHtmlEscaped() + QStringLiteral("<br>") + second,
                      text);
        break;
    }
    case Model::FirstChoiceColumn:
    case Model::SecondChoiceColumn: {
        QStyleOptionButton radio;
        radio.rect = cell;
        radio.text = index.data().toString();
        radio.palette = option.palette;
        radio.fontMetrics = option.fontMetrics;
        radio.direction = option.direction;
        radio.state =
            QStyle::State_Enabled |
            (index.data(Model::CheckedRole).toBool() ? QStyle::State_On : QStyle::State_Off);
        style->drawControl(QStyle::CE_RadioButton, &radio, painter, widgetOf(option));
        break;
    }
    case Model::MineColumn:
    case Model::ImportedColumn:
        paintRichText(painter, option, index.data().toString(), cell);
        break;
    case Model::CompareColumn: {
        const QString text = index.data().toString();
        if (text.isEmpty()) break;
        QStyleOptionButton button;
        button.rect = cell;
        button.text = text;
        button.palette = option.palette;
        button.fontMetrics = option.fontMetrics;
        button.state = QStyle::State_Enabled | QStyle::State_Raised;
        style->drawControl(QStyle::CE_PushButton, &button, painter, widgetOf(option));
        break;
    }
    default:
        break;
    }
}

QSize ImportRowDelegate::sizeHint(const QStyleOptionViewItem& option,
                                  const QModelIndex& index) const
{
    const int line = option.fontMetrics.height();
    // Every row takes two lines: the tree can then lay out thousands of rows by one height.
    const int height = 2 * line + 8;
    int width = 0;
    switch (index.column()) {
    case Model::ElementColumn:
        width = 260;
        break;
    case Model::FirstChoiceColumn:
    case Model::SecondChoiceColumn:
        width = option.fontMetrics.horizontalAdvance(Model::choiceText(true, index.column())) + 36;
        break;
    case Model::MineColumn:
    case Model::ImportedColumn:
        width = 200;
        break;
    case Model::CompareColumn:
        width = option.fontMetrics.horizontalAdvance(QStringLiteral("Сравнить")) + 24;
        break;
    default:
        break;
    }
    return {width, height};
}

bool ImportRowDelegate::editorEvent(QEvent* event, QAbstractItemModel* model,
                                    const QStyleOptionViewItem& option, const QModelIndex& index)
{
    if (!isRecordRow(index)) return false;
    bool activate = false;
    if (event->type() == QEvent::MouseButtonRelease) {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        activate =
            mouse->button() == Qt::LeftButton && option.rect.contains(mouse->position().toPoint());
    } else if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        activate = key == Qt::Key_Space || key == Qt::Key_Select;
    }
    if (!activate) return false;
    switch (index.column()) {
    case Model::FirstChoiceColumn:
    case Model::SecondChoiceColumn:
        return model->setData(index, true, Model::CheckedRole);
    case Model::CompareColumn:
        if (index.data().toString().isEmpty()) return false;
        emit compareRequested(index);
        return true;
    default:
        return false;
    }
}

} // namespace exchange
