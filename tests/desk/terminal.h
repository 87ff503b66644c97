#pragma once

#include <QByteArray>
#include <QStringList>

namespace panelry::test
{

/// A terminal of 80 columns with the desk on it, and what can be seen there.
class Terminal
{
public:
    Terminal() = default;
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// The desk with the stand-in for the panels' library, its memory in `stateDirectory`.
    void Start(const QStringList& arguments, const QString& stateDirectory);
    void Type(const QByteArray& keys) const;

    /// Reads until a row is, or contains, `text`; false after half a minute.
    bool ShowsRow(const QString& text) { return WaitFor(text, false); }
    bool Shows(const QString& text) { return WaitFor(text, true); }
    /// Reads to the end and gives the exit status, -1 for another end.
    int Finish();

    QStringList Rows() const;

private:
    bool WaitFor(const QString& text, bool part);
    bool Read();
    void Put(QChar character);
    void Control(const QByteArray& sequence);

    QStringList m_rows{QString()};  // a wide character is followed by a NUL, so that places are columns
    int m_master = -1;
    int m_process = -1;
    QByteArray m_unread;
    int m_row = 0;
    int m_column = 0;
};

}  // namespace panelry::test
