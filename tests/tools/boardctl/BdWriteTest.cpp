#include "support/Transcript.h"

using support::expectTranscript;
using support::TempDir;

TEST(BdWrite, PutsWholeImagesOnFilesAndDevicesAndRecordsIt) {
    expectTranscript(TempDir(), R"sh(
$ boardctl sim create sim >messages; ln -s sim/* .; cp eeprom.bin unit; mkdir log
$ echo '[{"id":5,"data":"534e2d31"},{"id":1,"data":"0200000000090003"}]' >list
$ boardctl --board board.toml bd write list -y --backup first --record log/log
eeprom.bin: 2 tags in 24 bytes
eeprom.bin: written; the old image is in first
$ boardctl --board board.toml bd write list -y --record log/log; cmp first unit
eeprom.bin: 2 tags in 24 bytes
eeprom.bin: already up to date; nothing was written
$ boardctl bd get 5 -i eeprom.bin --type text; tail -c +25 unit | cmp - `tail -c +25 eeprom.bin >rest; echo rest`
SN-1
$ boardctl --board board.toml bd write - --fill ff -q -y --record log/log <list; tail -c +25 eeprom.bin | tr -d '\377' | wc -c
0
$ sed 's/"time":"20[-0-9]*T[:0-9]*Z"/TIME/; s/[0-9a-f]\{60\}/-/g; s#"/[^"]*/state/[^"]*"#"STATE"#' log/log | cut -d , -f 1-3,6-
{TIME,"device":"eeprom.bin","result":"written","serial":"SN-1","addresses":[{"mac":"02:00:00:00:00:09","interface":3}],"backup":"first","simulated":true}
{TIME,"device":"eeprom.bin","result":"unchanged","serial":"SN-1","addresses":[{"mac":"02:00:00:00:00:09","interface":3}],"simulated":true}
{TIME,"device":"eeprom.bin","result":"written","serial":"SN-1","addresses":[{"mac":"02:00:00:00:00:09","interface":3}],"backup":"STATE","simulated":true}
$ sha256sum <unit | cut -c -64 | grep -o -f - log/log | wc -l; sha256sum <eeprom.bin | cut -c -64 | grep -o -f - log/log | wc -l
1
1
$ printf '{"a":1}' >cut; boardctl --board board.toml bd write unit -y -q --backup second --record cut; sed 's/,.*//; s/"2.*/TIME/' cut
{"a":1}
{"time":TIME
$ boardctl bd write list -i log -q --record failed; cut -d , -f 2- failed
"device":"log","result":"failed","sha256_before":null,"sha256_after":null,"serial":"SN-1","addresses":[{"mac":"02:00:00:00:00:09","interface":3}],"error":"log: can't be replaced (expected a file or a device)"}
! boardctl: log: can't be replaced (expected a file or a device)
$ boardctl bd write list -i first -q; boardctl bd check first | tail -n 1; boardctl bd build list -o exact; boardctl bd write unit -i exact -q; wc -c <exact
2 tags in 24 of 512 bytes
74
)sh");
}

TEST(BdWrite, RefusesWhatShouldNotBeOnADevice) {
    expectTranscript(TempDir(), R"sh(
$ boardctl sim create sim >messages; cp sim/eeprom.bin image; cp image before; : >empty
$ head -c 80 /dev/zero | tr '\000' '\377' >erased; head -c 30 image >cut; echo '[{"id":9,"data":"01"},{"id":45,"data":"010203"},{"id":6,"data":""},{"id":7,"data":""},{"id":16,"data":""}]' >size
$ echo '[{"id":5,"data":"01"},{"id":0,"data":""},{"id":45,"data":"00000001"}]' >behind
$ for i in empty erased cut size behind nosuch; do boardctl bd write $i -i image; done
! boardctl: empty: is empty (expected an image or a JSON list of tags)
! boardctl: erased: holds no tags; nothing was written (--force writes an empty descriptor)
! boardctl: cut: CORRUPTED BOARD DESCRIPTOR: id=1 has invalid field length (len=8 overflow the buffer size 30) at pos=24; nothing was written (--force writes the tags before the fault)
! boardctl: size: ProductID: has 3 bytes (expected 4); at 0: Tag9: has 2 bytes (expected 4); at 14: Tag6: has 0 bytes (expected 4); 2 more; nothing was written (--force writes it anyway)
! boardctl: behind:1: entry 2: comes after the terminator, so it is never read (expected the terminator last)
! boardctl: nosuch: can't open: No such file or directory
[1]
$ for i in image ./before new; do boardctl bd write before -i image --force --backup new --record $i; done
! boardctl: image: is image itself (expected another file for the record)
! boardctl: ./before: is before itself (expected another file for the record)
! boardctl: new: is new itself (expected another file for the record)
[1]
$ mkfifo pipe; boardctl bd write before -i image --force --fill 00 --record pipe; wrong bd write before -i image --record -
boardctl: --record -: standard output has the result (expected a file)
! boardctl: pipe: is a pipe (expected a file for the record)
$ printf '[{"id":5,"data":"%01008d"}]' 0 | boardctl --board sim/board.toml bd write - -y --record log; tr , '\n' <log | grep -c `sha256sum <before | cut -c -64`
2
! boardctl: sim/eeprom.bin: the image would have 512 bytes (expected fewer than the device's 512)
$ cmp image before; cmp sim/eeprom.bin before; ls state 2>&- | wc -l; wrong bd write image -i image --fill F
0
boardctl: --fill: 'F' (expected two hexadecimal digits, such as FF)
$ boardctl bd write cut -i image --force -q; boardctl bd check image | tail -n 1
2 tags in 24 of 512 bytes
$ boardctl bd put 9=u16:1 45=hex:000102 -i image
! boardctl: image: Tag9 would have 2 bytes (expected 4), ProductID would have 3 bytes (expected 4); nothing was written (--force writes it anyway)
[1]
)sh");
}

TEST(BdWrite, NamesItsResultForPrograms) {
    expectTranscript(TempDir(), R"sh(
$ boardctl sim create sim >messages; ln -s sim/* .; echo '[{"id":45,"data":"00000001"}]' >list
$ result() { boardctl --board board.toml --format json bd "$@" | tr -s ' \n' ' ' | sed 's/ $//' | grep -o '"result": [^,]*\|"wrong_size": [^}]*}\|"error": .*'; }; result put 45=u8:1 -y 2>messages; result write list 2>messages; result write list -y -q; result put 45=u32:1 -y
"result": "failed"
"wrong_size": "1 byte (expected 4)" }
"error": "eeprom.bin: ProductID would have 1 byte (expected 4); nothing was written (--force writes it anyway)", "simulated": true }
"result": "declined"
"error": "eeprom.bin: is a board's device, and standard input is not a terminal to ask on (expected -y); nothing was written", "simulated": true }
"result": "written"
"result": "unchanged"
$ printf "[descriptor]\ndevice='large'\nsize=1018\n" >new.toml; printf '\000\000\000\004' >large; printf '[{"id":5,"data":"%01200d"}]' 0 >long
$ (ulimit -f 1; unset XDG_STATE_HOME HOME; boardctl --board new.toml --format json bd write long -y --backup b >document); grep result document
  "result": "restored",
! boardctl: large: accepted only 512 of 608 bytes; the old image is in place again and is kept in b
)sh");
}

TEST(BdBackups, ListsWhatWasKeptByDeviceAndUnitAndKeepsTheNewest) {
    expectTranscript(TempDir(), R"sh(
$ mkdir -p bus/1-0050; printf '\000\005\000\010SN-1\000\000\000\004' >bus/1-0050/eeprom; cp bus/1-0050/eeprom image
$ for i in 2 3; do boardctl bd put 5=text:SN-$i -q -i bus/1-0050/eeprom; done; boardctl bd remove 5 -i image -q; boardctl bd put 5=text:/../a -i image -q
$ for i in jig jig2; do mkdir $i; cp bus/1-0050/eeprom $i/unit.bin; boardctl bd put 5=text:SN-9 -i $i/unit.bin -q; done
$ boardctl bd backups | sed 's/20[0-9T]*Z/DATE/g; s,/.*/state,state,; s/\.[^.]*$//' | sort
DATE  1-0050-eeprom  SN-1  1 tag  state/boardctl/1-0050-eeprom-SN-1-DATE
DATE  1-0050-eeprom  SN-2  1 tag  state/boardctl/1-0050-eeprom-SN-2-DATE
DATE  image  -  0 tags  state/boardctl/image-DATE
DATE  image  SN-1  1 tag  state/boardctl/image-SN-1-DATE
DATE  jig-unit.bin  SN-3  1 tag  state/boardctl/jig-unit.bin-SN-3-DATE
DATE  jig2-unit.bin  SN-3  1 tag  state/boardctl/jig2-unit.bin-SN-3-DATE
$ json bd backups --keep 1 | grep -o '"serial": [^,]*'; boardctl bd backups --keep 0 -q; ls state/boardctl
"serial": "SN-1"
"serial": "SN-1"
$ cd state/boardctl; : >b-20260101T000000Z.abcdef; head -c 65537 /dev/zero >a-20260101T000000Z.abcdef; boardctl bd backups 2>said | sed 's,  /.*,,'; sed 's,/.*/,,' said; json bd backups 2>said | grep -c error; boardctl bd backups -q 2>said
20260101T000000Z  b  -  0 tags
boardctl: a-20260101T000000Z.abcdef: is larger than 65536 bytes, which is the most expected
1
[1]
)sh");
}
