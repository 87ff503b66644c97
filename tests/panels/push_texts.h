#pragma once

#include <QByteArray>

/// `text` with double quotes for single ones. (Raw literals with an open bracket in them lead moc astray.)
inline QByteArray Json(QByteArray text)
{
    return text.replace('\'', '"');
}

/// Three stocks: rising, falling with three decimals, unchanged.
inline QByteArray ThreeStocks()
{
    return R"({"quotes":[
{"code":"600519","name":"甲股份","decimals":2,"prev_close":"1702.30","last":"1710.00","open":"1700.00",
 "high":"1712.50","low":"1699.01","volume":"123456",
 "bids":[["1709.99","12"],["1709.00","3"],["1702.30","40"],["1702.29","8"],["1700.00","1"]],
 "asks":[["1710.00","8"],["1710.50","20"],["1711.00","5"],["1712.00","2"],["1715.00","9"]]},
{"code":"510300","name":"乙基金","decimals":3,"prev_close":"3.985","last":"3.982","open":"3.985",
 "high":"3.990","low":"3.980","volume":"88","bids":[["3.982","100"]],"asks":[]},
{"code":"000001","name":"丙银行","prev_close":"11.42","last":"11.42","volume":"7"}]})";
}
