#include "input/key_names.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace panelry
{

namespace
{

constexpr std::string_view kUnknown = "unknown";

struct Modifier {
    std::uint16_t mask;  // left or right
    std::string_view prefix;
};
constexpr Modifier kModifiers[] = {{0x22, "ctrl+"}, {0x11, "shift+"}, {0x88, "alt+"}, {0x44, "meta+"}};

struct NamedKey {
    std::uint16_t code;
    std::string_view name;
};

constexpr std::uint16_t kLowCodes = 128;
constexpr NamedKey kLowKeys[] = {
    {30, "a"},   {48, "b"},     {46, "c"},     {32, "d"},   {18, "e"},         {33, "f"},     {34, "g"},
    {35, "h"},   {23, "i"},     {36, "j"},     {37, "k"},   {38, "l"},         {50, "m"},     {49, "n"},
    {24, "o"},   {25, "p"},     {16, "q"},     {19, "r"},   {31, "s"},         {20, "t"},     {22, "u"},
    {47, "v"},   {17, "w"},     {45, "x"},     {21, "y"},   {44, "z"},         {2, "1"},      {3, "2"},
    {4, "3"},    {5, "4"},      {6, "5"},      {7, "6"},    {8, "7"},          {9, "8"},      {10, "9"},
    {11, "0"},   {28, "enter"}, {57, "space"}, {15, "tab"}, {14, "backspace"}, {1, "esc"},    {59, "f1"},
    {60, "f2"},  {61, "f3"},    {62, "f4"},    {63, "f5"},  {64, "f6"},        {65, "f7"},    {66, "f8"},
    {67, "f9"},  {68, "f10"},   {87, "f11"},   {88, "f12"}, {29, "ctrl"},      {42, "shift"}, {54, "shift"},
    {56, "alt"},
};
constexpr NamedKey kHighKeys[] = {
    {3667, "delete"}, {57419, "left"}, {57416, "up"},  {57421, "right"}, {57424, "down"},
    {3613, "ctrl"},   {3640, "alt"},   {3675, "meta"}, {3676, "meta"},
};

// Looked up for every key that anybody presses: the low codes, nearly all of them, by their place.
constexpr std::array<std::string_view, kLowCodes> kLowNames = [] {
    std::array<std::string_view, kLowCodes> names;
    names.fill(kUnknown);
    for (const NamedKey& key : kLowKeys) {
        names[key.code] = key.name;
    }
    return names;
}();

constexpr bool IsBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

}  // namespace

std::string_view KeyName(std::uint16_t keyCode)
{
    if (keyCode < kLowCodes) {
        return kLowNames[keyCode];
    }
    const auto* const found = std::find_if(std::begin(kHighKeys), std::end(kHighKeys),
                                           [keyCode](const NamedKey& key) { return key.code == keyCode; });
    return found == std::end(kHighKeys) ? kUnknown : found->name;
}

std::string KeyEventName(const uiohook_event& event)
{
    std::string name;
    for (const Modifier& modifier : kModifiers) {
        if ((event.mask & modifier.mask) != 0) {
            name += modifier.prefix;
        }
    }
    return name += KeyName(event.data.keyboard.keycode);
}

std::string NormalizedCombination(std::string_view text)
{
    std::string normalized;
    for (const char c : text) {
        if (!IsBlank(c)) {
            normalized += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        }
    }
    return normalized;
}

}  // namespace panelry
