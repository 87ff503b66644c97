#!/usr/bin/env python3
"""Writes desk/demo.jsonl: `python3 desk/make_demo.py > desk/demo.jsonl`. For maintainers; a build doesn't run it.

The codes are real exchange codes; names, prices and volumes are invented. The same script always comes out.
"""

import json
import sys

BOARD = 41001
MONITOR = 41002
WATCHLIST = 41003
HOT_KEYS = 41004
CLONE, CLOSE, TEXT = "9001", "9002", "1"  # commands of the panels
LENGTH = 64_000  # ms
LEVELS = 5


class Dice:
    """A generator of its own: the same numbers with every version of Python."""

    def __init__(self, seed):
        self.state = seed

    def below(self, limit):
        self.state = (self.state * 6364136223846793005 + 1442695040888963407) % 2**64
        return (self.state >> 33) % limit

    def between(self, least, most):
        return least + self.below(most - least + 1)


class Stock:
    """Prices are whole numbers of ticks."""

    def __init__(self, code, name, decimals, prev_close, open_, limit_percent, step, lots, dice):
        self.code, self.name, self.decimals = code, name, decimals
        self.prev_close, self.open = prev_close, open_
        self.last = self.high = self.low = open_
        self.step, self.lots, self.dice = step, lots, dice
        self.ceiling = prev_close + prev_close * limit_percent // 100
        self.floor = prev_close - prev_close * limit_percent // 100
        self.volume = dice.between(lots * 40, lots * 90)
        self.drift = 0

    def move(self):
        # A drift that turns now and then makes runs; without it the price only trembles.
        if self.dice.below(8) == 0:
            self.drift = self.dice.between(-1, 1) * self.step
        change = self.dice.between(-self.step, self.step) + (self.drift if self.dice.below(4) == 0 else 0)
        self.last = min(self.ceiling, max(self.floor, self.last + change))
        self.high, self.low = max(self.high, self.last), min(self.low, self.last)
        self.volume += self.dice.between(1, self.lots)

    def text(self, ticks):
        whole, part = divmod(ticks, 10**self.decimals)
        return f"{whole}.{part:0{self.decimals}d}"

    def level(self, price):
        return [self.text(price), str(self.dice.between(1, self.lots))]

    def side(self, start, direction):
        """Five prices from the best one away from the last price, with gaps in an expensive stock."""
        levels, price = [], start
        for _ in range(LEVELS):
            levels.append(self.level(price))
            price += direction * self.dice.between(1, max(1, self.step // 2))
        return levels

    def quote(self):
        # The last trade hit the best bid or the best ask.
        at_ask = self.dice.below(2) == 1
        ask = self.last if at_ask else self.last + self.dice.between(1, max(1, self.step // 3))
        bid = self.last - self.dice.between(1, max(1, self.step // 3)) if at_ask else self.last
        return {
            "code": self.code,
            "name": self.name,
            "decimals": self.decimals,
            "prev_close": self.text(self.prev_close),
            "last": self.text(self.last),
            "open": self.text(self.open),
            "high": self.text(self.high),
            "low": self.text(self.low),
            "volume": str(self.volume),
            "bids": self.side(bid, -1),
            "asks": self.side(ask, 1),
        }


def operate(at, id_, **keys):
    return {"at": at, "type": "operate", "id": id_, "text": keys}


def clicked(at, id_, **more):
    return operate(at, id_, operate="clicked", need_wrapper="1", need_display="1", **more)


def notify(at, id_, cmd, text=""):
    return operate(at, id_, operate="notify", cmd=cmd, bussiness=text, need_create_new="0")


def push(at, stocks):
    to_all = 22_000 <= at < 26_000
    quotes = [stock.quote() for stock in stocks]
    return {"at": at, "type": "push", "id": -1 if to_all else BOARD, "text": {"init_param": {"quotes": quotes}}}


def note(at, text):
    return {"at": at, "note": text}


def session():
    """What the host does besides pushing quotes."""
    return [
        {"at": 0, "name": {str(BOARD): "行情", str(MONITOR): "消息", str(WATCHLIST): "自选", str(HOT_KEYS): "热键"}},
        note(0, "the panels are opened"),
        clicked(200, BOARD),
        clicked(600, MONITOR),
        clicked(1_000, WATCHLIST),
        clicked(1_400, HOT_KEYS, init_param={"combinations": "f9 ctrl+shift+a", "releases": "1"}),
        note(4_000, "F9 and Ctrl+Shift+A, pressed in whatever window, show up in the hot keys panel"),
        notify(2_000, MONITOR, TEXT, "a message for this panel alone"),
        note(9_000, "the quote board is toggled twice: away and back"),
        clicked(9_000, BOARD),
        clicked(11_000, BOARD),
        note(15_000, "all panels are hidden and shown again"),
        operate(15_000, -1, operate="hide", cmd=TEXT, bussiness="all panels are hidden"),
        operate(17_000, -1, operate="show", cmd=TEXT, bussiness="all panels are shown"),
        note(22_000, "quotes go to all panels: the monitor shows them too"),
        note(26_000, "quotes go to the quote board alone again"),
        note(27_000, "a quick time begins: 20 pushes a second"),
        note(35_000, "the quick time is over"),
        note(40_000, "the quote board is cloned: the clone has no frame and waits for \"show\""),
        notify(40_000, BOARD, CLONE),
        operate(42_000, BOARD, operate="show"),
        note(50_000, "the message monitor closes and is opened anew"),
        notify(50_000, MONITOR, CLOSE),
        clicked(53_000, MONITOR),
        notify(54_000, MONITOR, TEXT, "a new monitor, which knows nothing of the old one's messages"),
        note(LENGTH, "the end"),
        {"at": LENGTH, "quit": True},
    ]


def quotes(dice):
    """First all stocks, then the ones that moved: about six pushes a second, twenty in the quick time."""
    stocks = [
        Stock("600519", "演示一号", 2, 170230, 170500, 10, 60, 40, dice),
        Stock("000001", "演示二号", 2, 1142, 1140, 10, 1, 900, dice),
        Stock("300750", "演示三号", 2, 21860, 21795, 20, 12, 150, dice),
        Stock("688981", "演示四号", 2, 9635, 9688, 20, 6, 200, dice),
        Stock("510300", "演示基金", 3, 3985, 3987, 10, 1, 4000, dice),
    ]
    at = 1_000
    lines = [push(at, stocks)]
    while True:
        quick = 27_000 <= at < 35_000
        at += 50 if quick else dice.between(80, 250)
        if at >= LENGTH - 500:
            return lines
        first = dice.below(len(stocks))
        moved = [stocks[first]]
        if dice.below(4) == 0:
            moved.append(stocks[(first + 1) % len(stocks)])
        for stock in moved:
            stock.move()
        lines.append(push(at, moved))


def main():
    lines = session() + quotes(Dice(41001))
    print("# A minute with the sample panels. Written by make_demo.py; names, prices and volumes are invented.")
    for line in sorted(lines, key=lambda line: line["at"]):
        json.dump(line, sys.stdout, ensure_ascii=False, separators=(",", ":"))
        print()


if __name__ == "__main__":
    main()
