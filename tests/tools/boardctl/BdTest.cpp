#include "support/Transcript.h"

using support::expectTranscript;
using support::TempDir;

TEST(Bd, BuildsAnImageAndReadsItInEachForm) {
    expectTranscript(TempDir(), R"sh(
$ printf '[{"id":45,"data":"1234ABcd"},{"id":5,"data":"6f6e651b"},{"id":1,"data":"0200000000070000"},' >tags
$ printf '{"id":5,"data":"ff"},{"id":1,"data":"02"},{"id":65534,"data":""},{"id":0,"data":""}]' >>tags
$ json bd build tags -o image
{ "image": "image", "tags": 7, "size": 48 }
$ boardctl bd dump image | tee dump
[
{"id":45,"name":"ProductID","length":4,"data":"1234abcd"},
{"id":5,"name":"Tag5","length":4,"data":"6f6e651b"},
{"id":1,"name":"MacAddress","length":8,"data":"0200000000070000"},
{"id":5,"name":"Tag5","length":2,"data":"ff00"},
{"id":1,"name":"MacAddress","length":2,"data":"0200"},
{"id":65534,"name":"Tag65534","length":0,"data":""},
{"id":0,"name":"Tag0","length":0,"data":""}
]
$ boardctl bd build dump -o image && boardctl bd build - -o - <dump | cmp - image && boardctl bd dump - <image | cmp - dump
$ printf '[7]' >tags; boardctl bd build tags -o image; boardctl bd dump -i image | cmp - dump
! boardctl: tags: entry 0: is 7 (expected an object with "id" and "data")
$ boardctl bd show image | grep x
    Tag5          one\x1b
    Tag5          \xff
$ boardctl bd get ProductID --type u32 -i image; boardctl bd get 0x5 --type text -i image
305441741
one\x1b
$ boardctl bd get Tag5.1 -i image; boardctl bd get 5.1 --type uint -i image
ff00
65280
$ json bd get 5.1 --type u16 -i image
{ "id": 5, "name": "Tag5", "index": 1, "type": "u16", "value": 65280, "length": 2, "data": "ff00" }
$ json bd get 45 --type u8 -i image
{ "id": 45, "name": "ProductID", "index": 0, "type": "u8", "value": null, "length": 4, "data": "1234abcd", "error": "ERR WRONG TAG SIZE" }
! boardctl: ERR WRONG TAG SIZE
[1]
$ boardctl bd mac list -i image
0 02:00:00:00:00:07 0
! boardctl: MAC address 1 is not 8 bytes long
[1]
$ json bd mac list -i image 2>messages
[ { "index": 0, "mac": "02:00:00:00:00:07", "interface": 0 }, { "index": 1, "mac": null, "interface": null, "error": "MAC address 1 is not 8 bytes long" } ]
[1]
$ boardctl bd mac get 0 -i image; json bd mac get 2 -i image
02:00:00:00:00:07 0
{ "index": 2, "mac": null, "interface": null, "error": "ERR TAG '1:=MacAddress' NOT FOUND" }
! boardctl: ERR TAG '1:=MacAddress' NOT FOUND
[1]
)sh");
}

TEST(Bd, ReadsTheGoodTagsOfACorruptImageAndTheBoardsOwn) {
    expectTranscript(TempDir(), R"sh(
$ printf '\000\055\000\010\022\064\253\315\000\007\000\002' >image
$ boardctl bd dump image
[
{"id":45,"name":"ProductID","length":4,"data":"1234abcd"}
]
! boardctl: CORRUPTED BOARD DESCRIPTOR: id=7 has invalid field length (chunkLen=2 is too small) at pos=10
[1]
$ boardctl bd show image 2>messages | tail -n 1
    Product  ID   ab cd
$ json bd check image 2>messages
{ "corrupt": true, "size": 12, "used": 8, "tags": 1, "findings": [ { "offset": 8, "weight": "corrupt", "text": "CORRUPTED BOARD DESCRIPTOR: id=7 has invalid field length (chunkLen=2 is too small) at pos=10" } ] }
[3]
$ { printf '\000\005\377\374'; head -c 65528 /dev/zero; printf '\000\000\000\004'; } >large
$ boardctl bd check large && printf x >>large; boardctl bd check large
1 tag in 65536 of 65536 bytes
! boardctl: large: is larger than 65536 bytes, which is the most expected
[1]
$ boardctl sim create sim >gone; printf 'more' | dd of=sim/eeprom.bin bs=1 seek=82 conv=notrunc status=none
$ boardctl --board sim/board.toml bd check
at 82: note: bytes after the terminator that are neither 0x00 nor 0xFF
7 tags in 74 of 512 bytes
$ boardctl bd check sim/eeprom.bin >found; status=$?; head -n 1 found | cut -c 1-30; (exit $status)
at 82: warning: bytes after th
[3]
)sh");
}
