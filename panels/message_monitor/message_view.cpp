#include "message_monitor/message_view.h"

#include <QFontDatabase>
#include <QKeyEvent>
#include <QScrollBar>
#include <QSyntaxHighlighter>
#include <QTextBlock>
#include <QTextCursor>

#include "common/panel_style.h"
#include "message_monitor/message_line.h"

namespace panelry
{

namespace
{

// Time and id of each line in colours of their own.
class Columns : public QSyntaxHighlighter
{
public:
    using QSyntaxHighlighter::QSyntaxHighlighter;

protected:
    void highlightBlock(const QString& /*text*/) override
    {
        setFormat(0, kTimeColumnEnd, QColor(style::kMutedText));
        setFormat(kTimeColumnEnd, kIdColumnEnd - kTimeColumnEnd, QColor(style::kFocus));
    }
};

}  // namespace

MessageView::MessageView(int mostLines, QWidget* parent) : QPlainTextEdit(parent)
{
    setReadOnly(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setTabChangesFocus(true);
    setFrameShape(NoFrame);
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setMaximumBlockCount(mostLines);
    setUndoRedoEnabled(false);
    document()->setDocumentMargin(fontMetrics().averageCharWidth());
    new Columns(document());
}

void MessageView::Append(const QStringList& lines)
{
    const bool following = IsFollowing();
    const QTextCursor top(firstVisibleBlock());  // follows its line when others are removed above it
    const int linesAbove = verticalScrollBar()->value() - top.block().firstLineNumber();
    appendPlainText(lines.join(QLatin1Char('\n')));
    verticalScrollBar()->setValue(following ? verticalScrollBar()->maximum()
                                            : top.block().firstLineNumber() + linesAbove);
}

bool MessageView::IsFollowing() const
{
    return verticalScrollBar()->value() == verticalScrollBar()->maximum();
}

void MessageView::ShowNewest()
{
    moveCursor(QTextCursor::End);
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

int MessageView::Lines() const
{
    return document()->isEmpty() ? 0 : document()->blockCount();
}

QString MessageView::TextToCopy() const
{
    // A selection has paragraph separators between its lines.
    return textCursor().hasSelection()
               ? textCursor().selectedText().replace(QChar::ParagraphSeparator, QLatin1Char('\n'))
               : toPlainText();
}

void MessageView::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Copy)) {
        Q_EMIT CopyWanted();
        event->accept();
        return;
    }
    if (event->key() == Qt::Key_End && event->modifiers() == Qt::NoModifier) {
        ShowNewest();
        event->accept();
        return;
    }
    QPlainTextEdit::keyPressEvent(event);
}

}  // namespace panelry
