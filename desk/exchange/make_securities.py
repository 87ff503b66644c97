#!/usr/bin/env python3
"""Writes desk/exchange/securities.json. For maintainers; a build doesn't run it:
`python3 desk/exchange/make_securities.py > desk/exchange/securities.json`.

The codes are of real code ranges; names and prices are invented. The same file always comes out. A security that
the order ticket would show with other decimals than the file says stops the script.
"""

import json
import re
import sys

RULES, RULES_DATE = "沪深交易规则", "2023-04-10"

# Kind, market and rules of each group. What a group doesn't say is as the reader's defaults have it: two
# decimals, 10 %, lots of 100, orders up to 1,000,000.
MAIN_17 = {"kind": "stock", "market": 17}
MAIN_33 = {"kind": "stock", "market": 33}
STAR = {"kind": "star", "market": 22, "limit_percent": 20, "lot": 1, "minimum": 200, "maximum": 100_000}
CHINEXT = {"kind": "chinext", "market": 37, "limit_percent": 20, "maximum": 300_000}
B_18 = {"kind": "stock", "market": 18, "decimals": 3}
B_34 = {"kind": "stock", "market": 34}
FUND_20 = {"kind": "fund", "market": 20, "decimals": 3}
FUND_36 = {"kind": "fund", "market": 36, "decimals": 3}
HAND_10 = 2 << 8
TELLS_BUYABLE = 4
BOND = {"kind": "bond", "decimals": 3, "limit_percent": 0, "lot": 10, "options": HAND_10, "same_day": True}
CONVERTIBLE = {"kind": "convertible", "decimals": 3, "limit_percent": 20, "lot": 10, "options": HAND_10,
               "same_day": True}
SUBSCRIPTION = {"kind": "subscription", "limit_percent": 0, "lot": 500, "maximum": 20_000}
CONNECT = {"kind": "connect", "market": 64, "decimals": 3, "limit_percent": 0, "same_day": True}
INDEX = {"kind": "index", "limit_percent": 0}
ST = {"limit_percent": 5}
NEW = {"limit_percent": 0}
TWENTY = {"limit_percent": 20}  # funds of nothing but STAR or ChiNext stocks

# What the ticket shows with three decimals, whatever else it hears; "18:" means that market only.
THREE_DECIMALS = (
    "50*;201*;202*;203*;204*;15*;16*;51*;58*;03*;18:9*;19*;184*;42*;180*;56*;706080;35:10*;11*;12*;13*;149*;"
    "009*;01*;02*;09*;101*;102*;103*;104*;105*;106*;107*;108*;109*;12*;13*;14*;15*;16*;17*;18*;19*;81*;821*"
).split(";")

TRADES = ("银行 证券 保险 地产 建筑 钢铁 煤炭 石油 电力 燃气 水务 铁路 航空 港口 公路 汽车 机械 重工 船舶 家电 "
          "纺织 服装 食品 饮料 酒业 医药 生物 医疗 化工 材料 玻璃 水泥 造纸 包装 电子 芯片 软件 通信 网络 传媒 "
          "影视 旅游 酒店 商业 物流 农业 种业 渔业 环保 新能").split()
MARKS = "甲乙丙丁戊己庚辛壬癸"


class Dice:
    """A generator of its own: the same numbers with every version of Python."""

    def __init__(self, seed):
        self.state = seed

    def between(self, least, most):
        self.state = (self.state * 6364136223846793005 + 1442695040888963407) % 2**64
        return least + (self.state >> 33) % (most - least + 1)


dice = Dice(20230410)
names = set()
securities = []


def text(thousandths, decimals):
    assert decimals == 3 or thousandths % 10 == 0
    return f"{thousandths // 1000}.{thousandths % 1000:03d}"[: None if decimals == 3 else -1]


def in_three_decimals(code, market):
    for entry in THREE_DECIMALS:
        scope, _, mask = entry.rpartition(":")
        if scope in ("", str(market)) and re.fullmatch(mask.replace("*", ".*", 1), code):
            return True
    return False


def add(group, code, close, name, **more):
    security = {"code": code, "name": name, "decimals": 2, **group, **more}
    decimals = security["decimals"]
    # Stock Connect's codes stand on no list of the ticket's: there the quote's own decimals count.
    expected = 3 if in_three_decimals(code, security["market"]) else 2
    if decimals != expected and security["kind"] != "connect":
        sys.exit(f"{code}@{security['market']}: the ticket shows {expected} decimals, not {decimals}")
    step = security.pop("step", 1 if decimals == 3 else 10)
    security["step"], security["close"] = text(step, decimals), text(round(close * 1000), decimals)
    if round(close * 1000) % step != 0:
        sys.exit(f"{code}: {close} is off the step")
    if name in names or any((s["code"], s["market"]) == (code, security["market"]) for s in securities):
        sys.exit(f"{code} {name} stands there already")
    names.add(name)
    order = ("code", "market", "name", "kind", "close", "decimals", "step")
    securities.append({key: security.pop(key) for key in order} | security)


def add_many(group, codes, cheapest, dearest, tail=""):
    """Names of trades that no company has; prices in fen."""
    for code in codes:
        mark, trade = divmod(len(securities), len(TRADES))
        add(group, str(code), dice.between(cheapest, dearest) / 100, f"模拟{TRADES[trade]}{MARKS[mark]}{tail}")


add(INDEX | {"market": 16}, "000001", 3105.22, "演示综合指数")
add(INDEX | {"market": 16}, "000300", 3921.48, "演示三百指数")
add(INDEX | {"market": 16}, "000688", 1012.35, "演示科创指数")
add(INDEX | {"market": 32}, "399001", 10890.16, "演示成份指数")
add(INDEX | {"market": 32}, "399006", 2215.77, "演示创业指数")

add(MAIN_17, "600000", 10.02, "演示银行")
add(MAIN_17, "600519", 1702.30, "演示酒业")
add(MAIN_17, "601988", 3.21, "演示商行")
add(MAIN_17, "603501", 88.88, "演示器件")
add(MAIN_17, "600086", 1.36, "ST演示珠宝", **ST)
add(MAIN_17, "600145", 4.05, "*ST演示瓷业", **ST)
add(MAIN_17, "605599", 21.60, "N演示家居", **NEW)
add(MAIN_17, "600100", 7.77, "演示停牌", suspended=True)
add_many(MAIN_17, (*range(600201, 600241), *range(601301, 601316), *range(603401, 603416)), 150, 6000)

add(MAIN_33, "000001", 11.42, "演示城商行")
add(MAIN_33, "000002", 8.35, "演示置业")
add(MAIN_33, "002594", 256.40, "演示车业")
add(MAIN_33, "000010", 2.04, "ST演示园林", **ST)
add(MAIN_33, "001399", 15.08, "N演示轴承", **NEW)
add(MAIN_33, "000300", 5.66, "演示同码")
add_many(MAIN_33, (f"{code:06d}" for code in (*range(501, 521), *range(2301, 2326))), 150, 6000)

add(STAR, "688981", 51.20, "演示芯片")
add(STAR, "688001", 33.90, "演示检测")
add(STAR, "689009", 40.15, "演示出行")
add(STAR, "688888", 26.00, "N演示光子", **NEW)
add(STAR, "688111", 312.50, "演示停牌科创", suspended=True)
add_many(STAR, range(688201, 688226), 600, 18000)

add(CHINEXT, "300750", 218.60, "演示电池")
add(CHINEXT, "300059", 14.93, "演示信息", options=TELLS_BUYABLE)
add(CHINEXT, "301399", 47.11, "N演示制剂", **NEW)
add_many(CHINEXT, [*range(300201, 300221), *range(301101, 301106)], 400, 15000)

add_many(B_18, range(900901, 900907), 20, 200, "B股")
add_many(B_34, range(200011, 200017), 100, 900, "B股")

add(FUND_20, "510300", 3.952, "演示三百基金")
add(FUND_20, "510050", 2.731, "演示五十基金")
add(FUND_20, "588000", 1.043, "演示科创基金", **TWENTY)
add(FUND_20, "511880", 100.214, "演示日利基金", same_day=True)
add(FUND_20, "513100", 1.288, "演示跨境基金", same_day=True)
add(FUND_20, "508000", 9.876, "演示园区基金")
add_many(FUND_20, [*range(512801, 512809), *range(515801, 515805)], 50, 400, "基金")
add(FUND_36, "159001", 100.001, "演示货币基金", same_day=True)
add(FUND_36, "159915", 2.187, "演示创业基金", **TWENTY)
add(FUND_36, "161725", 0.934, "演示分级基金")
add(FUND_36, "180101", 3.015, "演示仓储基金")
add_many(FUND_36, range(159801, 159809), 50, 400, "基金")

# In 手 on 19 and 35, in 张 on 23 and 39; one is ten of the other.
add_many(BOND | {"market": 19}, (122001, 122002, 136101, 143201, 155301), 9600, 10400, "债")
add_many(BOND | {"market": 35}, (112001, 112002, 114101, 149201), 9600, 10400, "债")
add(BOND | {"market": 23}, "019666", 101.235, "演示国债2201")
add_many(BOND | {"market": 23}, ("010107", "010303", "019547", "018008"), 9900, 10400, "国债")
add_many(BOND | {"market": 39}, ("101913", "102226", "103001", "107001"), 9900, 10400, "国债")
add(BOND | {"market": 39, "decimals": 2}, "100303", 100.52, "演示深债2301")
add(CONVERTIBLE | {"market": 19}, "113001", 118.350, "演示转债")
add_many(CONVERTIBLE | {"market": 19}, (110043, 111001, 113502, 118003), 9500, 18000, "转债")
add_many(CONVERTIBLE | {"market": 35}, (123001, 123002, 127003, 128004), 9500, 18000, "转债")

add(SUBSCRIPTION | {"market": 17}, "730999", 12.34, "演示申购")
add(SUBSCRIPTION | {"market": 17}, "732888", 8.90, "演示家居申购")
add(SUBSCRIPTION | {"market": 17, "maximum": 10_000}, "787777", 35.60, "演示光子申购")
add(SUBSCRIPTION | {"market": 33}, "001888", 19.99, "演示轴承申购")
add(SUBSCRIPTION | {"market": 33}, "301888", 41.05, "演示制剂申购")
add(SUBSCRIPTION | {"market": 33, "lot": 10, "maximum": 10_000, "options": HAND_10}, "072888", 100.00, "演示发债")

# Hong Kong dollars, own lots, own steps by price. The hand in `options` can only be a power of ten.
for number, (code, close, lot, step, hand) in enumerate((
        ("00700", 375.600, 100, 200, 3), ("00005", 61.250, 400, 50, 3), ("00941", 70.150, 500, 50, 3),
        ("01810", 15.740, 200, 20, 3), ("02318", 42.350, 500, 50, 3), ("03690", 121.300, 100, 100, 3),
        ("09988", 83.450, 100, 50, 3), ("00388", 298.400, 100, 200, 3), ("01398", 3.870, 1000, 10, 4),
        ("00992", 8.460, 2000, 10, 4), ("00857", 5.130, 2000, 10, 4), ("06808", 1.970, 500, 10, 3),
        ("02888", 62.600, 50, 50, 2), ("00175", 9.010, 1000, 10, 4))):
    add(CONNECT, code, close, f"演示港股{number + 1}", lot=lot, step=step, options=hand << 8)

required = {("600000", 17), ("600519", 17), ("688981", 22), ("300750", 37), ("000001", 33), ("000001", 16),
            ("510300", 20), ("159001", 36), ("019666", 23), ("113001", 19), ("00700", 64), ("900901", 18)}
missing = required - {(s["code"], s["market"]) for s in securities}
if missing or len(securities) < 200:
    sys.exit(f"missing: {missing}, {len(securities)} in all")

about = "What the simulated market trades. Codes are of real ranges; names and prices are invented."
print("{")
for key, value in (("about", about), ("rules", RULES), ("rules_date", RULES_DATE)):
    print(f"  {json.dumps(key)}: {json.dumps(value, ensure_ascii=False)},")
print('  "securities": [')
print(",\n".join("    " + json.dumps(security, ensure_ascii=False) for security in securities))
print("  ]\n}")
