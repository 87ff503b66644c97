#pragma once

#include <QDir>
#include <QFile>
#include <QMetaType>
#include <QTemporaryDir>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "watchlist/watchlist_manager_present.h"

Q_DECLARE_METATYPE(std::string)

namespace panelry::test
{

inline constexpr char kUserFile[] = "userconfig/Watchlist.json";
inline constexpr char kSystemFile[] = "sysconfig/Watchlist.json";
inline constexpr char kLatestFile[] = "userconfig/Lastestlist.json";

/// A list in short: "600000/16 000001/32"; an entry with a name is "600000/16=name", an absent market
/// "600000".
inline StockList Stocks(const std::string& text)
{
    StockList stocks;
    for (const QString& word : QString::fromStdString(text).split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const QString pair = word.section(QLatin1Char('='), 0, 0);
        StringMap& stock = stocks.emplace_back();
        stock["stockcode"] = pair.section(QLatin1Char('/'), 0, 0).toStdString();
        if (pair.contains(QLatin1Char('/'))) {
            stock["market"] = pair.section(QLatin1Char('/'), 1).toStdString();
        }
        if (word.contains(QLatin1Char('='))) {
            stock["stockname"] = word.section(QLatin1Char('='), 1).toStdString();
        }
    }
    return stocks;
}

/// The other way; keys besides the three are appended as "+key".
inline std::string Words(const StockList& stocks)
{
    std::string text;
    for (StringMap stock : stocks) {
        text += (text.empty() ? "" : " ") + stock["stockcode"];
        text += stock.contains("market") ? "/" + stock["market"] : "";
        text += stock.contains("stockname") ? "=" + stock["stockname"] : "";
        for (const char* const known : {"stockcode", "market", "stockname"}) {
            stock.erase(known);
        }
        for (const auto& [key, value] : stock) {
            text += "+" + key;
        }
    }
    return text;
}

inline WatchlistRequest Asking(int command, const std::string& items, int from = 0, int to = 0)
{
    WatchlistRequest request;
    request.cmd = command;
    request.items = Stocks(items);
    request.from = from;
    request.to = to;
    return request;
}

/// Writes down what it hears: "code: list". What `m_then` holds runs inside each call. Any thread may
/// tell it.
class Listener : public WatchlistListener
{
public:
    void OnWatchlistEvent(int code, const void* list) override
    {
        {
            const std::lock_guard guard(m_lock);
            m_heard.push_back(std::to_string(code) + ": " + Words(*static_cast<const StockList*>(list)));
        }
        if (m_then) {
            m_then();
        }
    }

    std::vector<std::string> m_heard;
    std::function<void()> m_then;

private:
    std::mutex m_lock;  // guards m_heard while it is registered
};

/// A directory of its own as the current one, and the service's presenter in it.
class ListStage
{
public:
    ListStage()
    {
        QDir::setCurrent(m_directory.path());
        QDir().mkdir(QStringLiteral("userconfig"));
        QDir().mkdir(QStringLiteral("sysconfig"));
    }
    /// The same with the user's list in its file, unless it is empty, and loaded.
    explicit ListStage(const QByteArray& usersList) : ListStage()
    {
        Put(kUserFile, usersList);
        Load();
    }
    ~ListStage()
    {
        m_present.reset();
        QDir::setCurrent(QDir::rootPath());
    }

    /// Makes a file under the directory; an empty text makes none.
    void Put(const char* name, const QByteArray& text) const
    {
        QFile file(Path(name));
        if (!text.isEmpty() && file.open(QFile::WriteOnly)) {
            file.write(text);
        }
    }
    /// "(none)" if it isn't there.
    QByteArray Text(const char* name) const
    {
        QFile file(Path(name));
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("(none)");
    }
    /// The list in a file, in short.
    std::string List(const char* name) const
    {
        return Words(nlohmann::json::parse(Text(name).toStdString()).get<StockList>());
    }

    bool Load()
    {
        m_present = std::make_unique<WatchlistManagerPresent>();
        return m_present->Load();
    }
    /// The end of the process, as far as the lists are concerned.
    void End() { m_present.reset(); }

    void Request(WatchlistCommand command, const std::string& items = {})
    {
        WatchlistRequest request = Asking(command, items);
        m_present->HandleRequest(request);
    }
    void Listen(WatchlistCommand command, WatchlistListener* listener)
    {
        WatchlistRequest request = Asking(command, "");
        request.listener = listener;
        m_present->HandleRequest(request);
    }
    /// A list as a new listener is told it.
    std::string Current(WatchlistCommand command = kListenWatchlist)
    {
        Listener listener;
        Listen(command, &listener);
        Listen(command == kListenLatest ? kUnlistenLatest : kUnlistenWatchlist, &listener);
        return listener.m_heard.back().substr(3);
    }

    std::unique_ptr<WatchlistManagerPresent> m_present;

    QString Path(const char* name) const { return m_directory.filePath(QString::fromLatin1(name)); }

private:
    QTemporaryDir m_directory;
};

/// What an operation throws, in the words of the exception; empty if nothing.
template <class Operation>
std::string Thrown(Operation operation)
{
    try {
        operation();
        return {};
    } catch (const std::exception& exception) {
        return exception.what();
    }
}

}  // namespace panelry::test
