#pragma once

#include <QStyledItemDelegate>

namespace exchange {

// Paints the rows of the import decisions: the element with its later-version warning, the
// two choices as radio buttons, the author and date of both sides as text, and the compare
// button of a conflict; and turns clicks on them into choices or a compare request. Nothing
// of a row is a widget.
class ImportRowDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    explicit ImportRowDelegate(QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override;

signals:
    // The compare button of the row at index (of the view's model) was pressed.
    void compareRequested(const QModelIndex& index);

private:
    void paintRichText(QPainter* painter, const QStyleOptionViewItem& option, const QString& html,
                       const QRect& rect) const;
};

} // namespace exchange
