#include "input/key_names.h"

#include "input/fake_hook.h"
#include "support/test.h"

using panelry::test::KeyEvent;

namespace
{

constexpr char kNames[] =
    "a b c d e f g h i j k l m n o p q r s t u v w x y z 0 1 2 3 4 5 6 7 8 9 enter space tab esc left "
    "backspace "
    "up right delete down f1 f2 f3 f4 f5 f6 f7 f8 f9 f10 f11 f12 meta meta ctrl ctrl shift shift alt alt";

}  // namespace

class KeyNamesTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    // The codes as libuiohook's header names them.
    void EveryNamedKeyHasItsName()
    {
        const QStringList names = QString::fromLatin1(kNames).split(QLatin1Char(' '));
        const int codes[] = {
            VC_A,     VC_B,         VC_C,      VC_D,      VC_E,         VC_F,         VC_G,       VC_H,
            VC_I,     VC_J,         VC_K,      VC_L,      VC_M,         VC_N,         VC_O,       VC_P,
            VC_Q,     VC_R,         VC_S,      VC_T,      VC_U,         VC_V,         VC_W,       VC_X,
            VC_Y,     VC_Z,         VC_0,      VC_1,      VC_2,         VC_3,         VC_4,       VC_5,
            VC_6,     VC_7,         VC_8,      VC_9,      VC_ENTER,     VC_SPACE,     VC_TAB,     VC_ESCAPE,
            VC_LEFT,  VC_BACKSPACE, VC_UP,     VC_RIGHT,  VC_DELETE,    VC_DOWN,      VC_F1,      VC_F2,
            VC_F3,    VC_F4,        VC_F5,     VC_F6,     VC_F7,        VC_F8,        VC_F9,      VC_F10,
            VC_F11,   VC_F12,       VC_META_L, VC_META_R, VC_CONTROL_L, VC_CONTROL_R, VC_SHIFT_L, VC_SHIFT_R,
            VC_ALT_L, VC_ALT_R};
        QCOMPARE(names.size(), static_cast<int>(std::size(codes)));
        std::map<int, std::string> expected;
        for (int i = 0; i < names.size(); ++i) {
            expected[codes[i]] = names[i].toStdString();
        }
        QCOMPARE(expected.size(), std::size_t{66});
        for (int code = 0; code <= 0xFFFF; ++code) {
            const auto entry = expected.find(code);
            const std::string name = entry == expected.end() ? "unknown" : entry->second;
            QCOMPARE(std::string(panelry::KeyName(static_cast<std::uint16_t>(code))), name);
        }
    }

    void AnEventIsNamedWithItsModifiersInOneOrder()
    {
        const std::tuple<int, int, const char*> named[] = {
            {MASK_SHIFT_L | MASK_CTRL_L | MASK_META_L | MASK_ALT_L, VC_F12, "ctrl+shift+alt+meta+f12"},
            {MASK_SHIFT_R | MASK_CTRL_R | MASK_META_R | MASK_ALT_R, VC_UP, "ctrl+shift+alt+meta+up"},
            {MASK_CTRL, VC_ENTER, "ctrl+enter"},
            {MASK_CTRL_L, VC_CONTROL_L, "ctrl+ctrl"},
            {MASK_NUM_LOCK | MASK_CAPS_LOCK | MASK_SCROLL_LOCK | MASK_BUTTON1, VC_0, "0"},
            {MASK_SHIFT_L, VC_SEMICOLON, "shift+unknown"}};
        for (const auto& [mask, code, name] : named) {
            QCOMPARE(panelry::KeyEventName(KeyEvent(EVENT_KEY_PRESSED, mask, code)), std::string(name));
        }
    }

    void NormalizingKnowsAsciiAlone()
    {
        QCOMPARE(panelry::NormalizedCombination(" Ctrl\t+ SHIFT\n+\r\vZ\f"), std::string("ctrl+shift+z"));
        // Bytes that are blanks or capitals in some single-byte encoding.
        const std::string text = "\xC3\x84\xA0\x85[@`{\x01";
        QCOMPARE(panelry::NormalizedCombination(text), text);
        QCOMPARE(panelry::NormalizedCombination(" \t "), std::string());
    }
};

PANELRY_TEST(KeyNamesTest)
#include "key_names_test.moc"
