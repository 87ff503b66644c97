#include "base/host_text.h"

#include <QByteArray>
#include <QString>
#include <QTextCodec>
#include <algorithm>
#include <atomic>
#include <memory>

namespace panelry
{

namespace
{

std::atomic<QTextCodec*> HostCodec{nullptr};

// Null only where the toolkit lacks the code page.
QTextCodec* Codec()
{
    if (QTextCodec* const codec = HostCodec.load(std::memory_order_acquire)) {
        return codec;
    }
    static QTextCodec* const standard = QTextCodec::codecForName(kDefaultHostEncoding);
    return standard;
}

bool IsAscii(std::string_view bytes)
{
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

bool KeepsAscii(QTextCodec* codec)
{
    QByteArray letters;
    for (char letter = 0x20; letter < 0x7F; ++letter) {
        letters.append(letter);
    }
    letters.append("\t\r\n");
    return codec->toUnicode(letters) == QString::fromLatin1(letters);
}

// Opening a converter costs more than most names: each thread keeps one.
struct Converter {
    QTextCodec* codec = nullptr;
    std::unique_ptr<QTextCodec::ConverterState> state;
};

QTextCodec::ConverterState* StateOf(QTextCodec* codec)
{
    thread_local Converter converter;
    if (converter.codec != codec) {
        converter.state = std::make_unique<QTextCodec::ConverterState>(QTextCodec::IgnoreHeader);
        converter.codec = codec;
    }
    return converter.state.get();
}

}  // namespace

bool SetHostEncoding(std::string_view codecName)
{
    if (codecName.empty()) {
        return false;
    }
    QTextCodec* const codec =
        QTextCodec::codecForName(QByteArray(codecName.data(), static_cast<int>(codecName.size())));
    if (!codec || !KeepsAscii(codec)) {
        return false;
    }
    HostCodec.store(codec, std::memory_order_release);
    return true;
}

std::string HostTextToUtf8(std::string_view bytes)
{
    if (IsAscii(bytes)) {
        return std::string(bytes);
    }
    QTextCodec* const codec = Codec();
    if (!codec) {
        return QString::fromUtf8(bytes.data(), static_cast<int>(bytes.size())).toStdString();
    }
    // A cut sequence at the end would wait inside the converter for its rest: a line end behind the text
    // forces it out, so that the next text begins clean.
    std::string ended(bytes);
    ended += '\n';
    QString text = codec->toUnicode(ended.data(), static_cast<int>(ended.size()), StateOf(codec));
    text.chop(1);
    return text.toStdString();
}

}  // namespace panelry
