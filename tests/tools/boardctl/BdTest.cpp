#include "support/Transcript.h"

using support::expectTranscript;
using support::TempDir;

TEST(Bd, BuildsAnImageAndReadsItInEachForm) {
    expectTranscript(TempDir(), R"sh(
$ printf '[{"id":45,"data":"1234ABcd"},{"id":5,"data":"6f6e651b"},{"id":1,"data":"0200000000070000"},' >tags
$ printf '{"id":5,"data":"ff"},{"id":1,"data":"02"},{"id":65534,"data":""},{"id":0,"data":""}]' >>tags
$ json bd build tags -o image
{ "image": "image", "tags": 7, "size": 48, "used": 48, "result": "written", "backup": null }
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
! boardctl: tags:1: entry 0: is 7 (expected an object such as {"id":45,"data":"1234abcd"})
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
$ boardctl bd check image -q; json bd check image
{ "corrupt": true, "size": 12, "used": 8, "tags": 1, "findings": [ { "offset": 8, "weight": "corrupt", "text": "CORRUPTED BOARD DESCRIPTOR: id=7 has invalid field length (chunkLen=2 is too small) at pos=10" }, { "offset": 8, "weight": "note", "text": "no terminator comes before this; 4 bytes are left: 00070002" } ] }
! boardctl: image: CORRUPTED BOARD DESCRIPTOR: id=7 has invalid field length (chunkLen=2 is too small) at pos=10
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

TEST(Bd, BuildsAUnitsImageFromATemplate) {
    expectTranscript(TempDir(), R"sh(
$ echo '[{"id":"ProductID","hex":"1234abcd"},{"id":5,"text":"SN"},{"id":1,"data":"0200000000070000"}]' >template
$ boardctl bd build template 5=text:SN-1 0x800E=u32:64 MacAddress=mac:02:00:00:00:00:08/1 -o unit; boardctl bd raw unit
Board Descriptor
    0 - Tag: 45 (ProductID)       len: 04  data: 12 34 ab cd
    1 - Tag: 5 (Tag5)             len: 04  data: 53 4e 2d 31
    2 - Tag: 1 (MacAddress)       len: 08  data: 02 00 00 00 00 07 00 00
    3 - Tag: 1 (MacAddress)       len: 08  data: 02 00 00 00 00 08 00 01
    4 - Tag: 32782 (DspChannels)  len: 04  data: 00 00 00 40
    5 - Tag: 0 (Tag0)             len: 00  data: 
$ cp unit old; json bd build template 6=u32:1 -o unit --size 64 --fill 00 | sed 's/"[^"]*unit-.*"/"DATED"/'; cmp state/boardctl/* old
{ "image": "unit", "tags": 5, "size": 64, "used": 38, "result": "written", "backup": "DATED" }
$ boardctl bd build template 6=u32:1 -o - --size 64 --fill 00 | cmp - unit; boardctl bd build template 6=u32:1 -o - --size 39 | tail -c 5 | od -An -tx1
 00 00 00 04 ff
$ json bd build template 6=u32:1 -o unit --size 64 --fill 00 --backup kept; test -e kept || echo none
{ "image": "unit", "tags": 5, "size": 64, "used": 38, "result": "unchanged", "backup": null }
none
$ boardctl bd build template -o unit --backup kept; boardctl bd build template --exact -o open; head -c 26 unit | cmp - open
unit: written; the old file is in kept
$ echo '[{"id":0,"data":""},{"id":5,"text":"ab"}]' >behind; boardctl bd build behind -o unit; boardctl bd build behind --exact -o - | wc -c
10
! boardctl: behind:1: entry 1: comes after the terminator, so it is never read (expected the terminator last)
$ boardctl bd build template 5=text:x --exact -o - | tail -c 14 | od -An -tx1
 78 00 00 01 00 0c 02 00 00 00 00 07 00 00
$ boardctl bd build template 6=u8:1 -o unit; boardctl bd build template 6=u8:1 --force -o unit >said; boardctl bd build template 1.3=hex: -o unit
! boardctl: Tag6: has 1 byte (expected 4); nothing was written (--force builds it anyway)
! boardctl: tag 1.3 can't be added (expected 1.1, the next one, or lower)
[1]
$ json bd build template 6=u8:1 -o unit 2>said; cp unit used; boardctl bd build template -o used --size 64 -q
{ "image": "unit", "result": "failed", "error": "Tag6: has 1 byte (expected 4); nothing was written (--force builds it anyway)" }
$ boardctl bd build template -o unit --size 30
! boardctl: template: the image would have 30 bytes (expected fewer than the 30 of --size, because a board needs one more)
[1]
$ for i in '5=u8:1 5.0=u8:2 -o unit' '-o unit --fill FF' '-o unit --size 64 --fill 100'; do wrong bd build template $i; done
boardctl: tag 5.0 is assigned twice
boardctl: --fill needs --size, the size to fill the image up to
boardctl: --fill: '100' (expected two hexadecimal digits, such as FF)
)sh");
}

TEST(Bd, ComparesAUnitWithWhatIsExpectedAndChecksSeveral) {
    expectTranscript(TempDir(), R"sh(
$ echo '[{"id":"ProductID","hex":"1234abcd"},{"id":5,"text":"SN-1"}]' >unit.json; boardctl bd build unit.json -o unit
$ boardctl bd compare unit.json unit; boardctl bd compare unit unit; boardctl bd compare - unit -q <unit.json
unit: 2 tags, as expected
unit: 2 tags, as expected
$ echo '[{"id":5,"matches":"SN-[0-9]+"},{"id":45,"size":2},{"id":6,"any":true}]' >wanted; boardctl bd compare wanted - <unit
Tag5 at 8: comes after ProductID at 0 (expected before it)
ProductID at 0: is 1234abcd (expected 2 bytes)
Tag6: is missing (expected any value)
standard input: 3 differences from what is expected
[3]
$ echo '[{"id":5,"text":"SN-2"}]' >wanted; json bd compare wanted -i unit -q
{ "expected": "wanted", "found": "unit", "result": "different", "tags": { "expected": 1, "found": 2 }, "differences": [ { "kind": "different", "id": 5, "name": "Tag5", "index": 0, "offset": 8, "expected": "534e2d32", "found": "534e2d31", "text": "Tag5 at 8: is \"SN-1\" (expected \"SN-2\")" }, { "kind": "extra", "id": 45, "name": "ProductID", "index": 0, "offset": 0, "expected": null, "found": "1234abcd", "text": "ProductID at 0: is extra: 1234abcd" } ] }
[3]
$ boardctl sim create sim >gone; boardctl bd compare unit.json --board sim/board.toml | tail -n 1; boardctl bd compare sim/eeprom.bin --board sim/board.toml
sim/eeprom.bin: 6 differences from what is expected
sim/eeprom.bin: 7 tags, as expected
$ wrong bd compare - -; boardctl bd compare unit gone/unit
boardctl: standard input can be read only once (expected one -)
! boardctl: gone/unit: can't open: Not a directory
[1]
$ head -c 8 unit >open; boardctl bd check unit open --require 5,ProductID
unit: 2 tags in 20 of 20 bytes
open: at 8: warning: Tag5: is missing (required)
open: at 8: warning: the image ends without a terminator (expected 00 00 00 04); written to a used device, the rest of its old image would follow
open: 1 tag in 8 of 8 bytes
[3]
$ json bd check unit none -q; tr '\0' '\377' </dev/zero | head -c 4 | cat open - >open2; boardctl bd check open2; boardctl bd check --strict open2
[ { "image": "unit", "corrupt": false, "size": 20, "used": 20, "tags": 2, "findings": [] }, { "image": "none", "error": "none: can't open: No such file or directory" } ]
at 8: note: the tags end at erased bytes, without a terminator (expected 00 00 00 04)
1 tag in 12 of 12 bytes
at 8: note: the tags end at erased bytes, without a terminator (expected 00 00 00 04)
1 tag in 12 of 12 bytes
! boardctl: none: can't open: No such file or directory
[3]
$ for i in Productid 5,; do wrong bd check --require $i unit; done
boardctl: --require: 'Productid' is not a tag (expected 1 to 65534, 0x1 to 0xfffe, or a name such as ProductID); did you mean 'ProductID'?
boardctl: --require: '' is not a tag (expected 1 to 65534, 0x1 to 0xfffe, or a name such as ProductID)
)sh");
}
