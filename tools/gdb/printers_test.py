"""Run by gdb: what the printers show of the values in printers_test.cpp."""

import re

import gdb

EXPECTED = r"""
nothing            nil
anything           u"Größe 𝄞"
empty              u""
buffer             u"changed"
reference          u"changed"
*buffer.get()      u"changed"
numbers            NSArray of 7 = {-7, 1, 2.5, 1e+300, 0.100000001, 18446744073709551615, 97}
queue              NSMutableArray of 4 = {1, 2, 3, NSNull}
nested             NSArray of 2 = {NSArray of 0, NSDictionary of 1 = {[u"width"] = NSArray of 2 = {3, u"four"}}}
frozen             NSMutableArray of 1 = {1}
holes              NSMutableDictionary of 3 = {[u"k0"] = 0, [u"k7"] = 7, [u"k14"] = 14}
members            NSMutableSet of 2 = {u"a", u"c"}
indexes            NSIndexSet of 6 = {3, 10-14}
manyIndexes        NSIndexSet of 1000 = {0, 2, 4, 6, ...}
thinned            NSIndexSet of 105 = {0, 2, 1994, 1996, 1998, 32760-32859}
moment             2001-01-01 23:59:59.500000 UTC
never              1e+20 seconds since 2001-01-01 00:00:00 UTC
bytes              NSData of 3 = <01 fe 7f>
error              NSError HostDomain 4
exception          HostException: out of paper
reasonless         HostException: nil
selector           "insertObject:atIndex:"
null               null
type               Class NSArray
account            (host::Account *) 0x...
log                (host::Log *) 0x...
mixed              NSArray of 2 = {(host::Account *) 0x..., u"text"}
wild               (tovi::NSObject *) 0x...
"""


def run():
    gdb.execute("set width 0")
    gdb.execute("set print elements 40")
    gdb.execute("break atTheEnd")
    gdb.execute("run", to_string=True)
    gdb.execute("up", to_string=True)
    wrong = 0
    for expression, expected in re.findall(r"^(\S+) +(.*)$", EXPECTED, re.MULTILINE):
        if expression == "manyIndexes":
            gdb.execute("set print elements 4")
        shown = re.sub("0x[0-9a-f]+", "0x...", gdb.execute(f"output {expression}", to_string=True))
        gdb.execute("set print elements 40")
        if shown != expected:
            print(f"{expression}\n  is shown as  {shown}\n  not as       {expected}")
            wrong += 1
    gdb.execute("kill")
    return wrong


try:
    wrong = run()
except gdb.error as error:
    print(error)
    wrong = 1
gdb.execute(f"quit {min(wrong, 1)}")
