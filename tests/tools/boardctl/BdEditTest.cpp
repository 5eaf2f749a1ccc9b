#include <filesystem>
#include <string>
#include <vector>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "support/Program.h"
#include "support/Transcript.h"

using support::expectTranscript;
using support::TempDir;

TEST(BdEdit, WritesEachTypeToABoardAndKeepsTheOldImages) {
    expectTranscript(TempDir(), R"sh(
$ boardctl sim create sim >messages; ln -s sim/* .
$ boardctl --board board.toml bd add -y 10=u8:255 11=u16:0x1234 12=u32:4294967295 13=uint:7 14=text:a=b:c 15=text: | sed 's,/.*/state/,state/,; s/-2.*/-DATE/'
+ 7 Tag10 (10): ff00
+ 8 Tag11 (11): 1234
+ 9 Tag12 (12): ffffffff
+ 10 Tag13 (13): 00000007
+ 11 Tag14 (14): 613d623a6300  "a=b:c"
+ 12 Tag15 (15): empty
eeprom.bin: written; the old image is in state/boardctl/eeprom.bin-SIM-000001-DATE
$ boardctl --board board.toml bd insert 0 -y --force --backup first 0xFFFE=hex:80ff Tag9=u8:0
+ 0 Tag65534 (65534): 80ff
+ 1 Tag9 (9): 0000  <- 1 byte (expected 4)
eeprom.bin: written; the old image is in first
$ boardctl --board board.toml bd mac set 0 02:00:00:00:00:0a 515 -y --backup second | head -n 2
- 3 MacAddress (1): 0200000000070000
+ 3 MacAddress (1): 02000000000a0203
$ boardctl --board board.toml bd mac add 02:00:00:00:00:0B -y --backup third | head -n 1
+ 5 MacAddress (1): 02000000000b0000
$ json --board board.toml bd remove MacAddress.1 -y --backup fourth
{ "image": "eeprom.bin", "device": true, "result": "written", "changes": [ { "position": 4, "id": 1, "name": "MacAddress", "old": "0200000000080001", "new": null } ], "written": true, "backup": "fourth", "simulated": true }
$ for i in first eeprom.bin . gone/backup; do boardctl --board board.toml bd remove 2 -y --backup $i; done
! boardctl: first: exists already, and may be the last good image (expected a new file for the backup)
! boardctl: eeprom.bin: is the image itself (expected another file for the backup)
! boardctl: .: can't hold a backup (expected a file)
! boardctl: gone/backup: can't create a new file in its folder: No such file or directory
[1]
$ printf "[descriptor]\ndevice='eeprom'\nsize=1018\n" >new.toml; printf '\000\000\000\004' >old
$ for i in 2016 2018; do cp old eeprom; boardctl --board new.toml bd add -y --backup $i 19=hex:`printf %0${i}d 0` | tail -n 1; done
eeprom: written; the old image is in 2016
! boardctl: eeprom: the image would have 1018 bytes (expected fewer than the device's 1018)
$ cp old eeprom; unset XDG_STATE_HOME HOME; ulimit -f 1; boardctl --board new.toml bd add -y --backup all 19=hex:`printf %01200d 0`
! boardctl: eeprom: accepted only 512 of 608 bytes; the old image is in place again and is kept in all
[1]
$ cmp -n 4 eeprom old; cmp all old
$ boardctl --board sim/board.toml bd mac list; ls state/boardctl | wc -l
0 02:00:00:00:00:0A 515
1 02:00:00:00:00:0B 0
1
)sh");
}

TEST(BdEdit, WritesAChangeOnlyIfItIsOneAndCanBeKept) {
    expectTranscript(TempDir(), R"sh(
$ printf '[{"id":45,"data":"1234abcd"},{"id":5,"data":"6f6e651b"},{"id":0,"data":""}]' >tags
$ boardctl bd build tags -o image; cp image before
$ json bd set 5=text:two -i image --dry-run
{ "image": "image", "device": false, "result": "unchanged", "changes": [ { "position": 1, "id": 5, "name": "Tag5", "old": "6f6e651b", "new": "74776f00" } ], "written": false, "backup": null, "dry_run": true }
$ boardctl bd set 5=hex:6f6e651b -i image --dry-run
image: already up to date; nothing was written
$ boardctl bd set 45=u8:1 6=u8:1 -i image
! boardctl: ERR TAG '6:=Tag6' NOT FOUND
[1]
$ cmp image before && [ ! -e state ]
$ printf '\000\055\000\010\022\064\253\315\000\007\000\002' >corrupt; boardctl bd remove 45 -i corrupt 2>messages
[1]
$ boardctl bd add 5=u8:1 -i corrupt --force --backup old
+ 1 Tag5 (5): 0100
+ 2 Tag0 (0): the terminator
corrupt: written; the old image is in old
! boardctl: CORRUPTED BOARD DESCRIPTOR: id=7 has invalid field length (chunkLen=2 is too small) at pos=10; only the tags before the fault are kept
$ boardctl --sim bd add 5=u8:1 | sed 's,/tmp/board-[^/]*,DIR,'
+ 7 Tag5 (5): 0100
DIR/eeprom.bin: written
! boardctl: --sim: this edits a simulated board that is removed after the command
$ env -u XDG_STATE_HOME HOME="$PWD" "$0" bd add 19=u8:1 -i image >gone; ls .local/state/boardctl | cut -c 1-8
image-20
$ env -u XDG_STATE_HOME HOME=here "$0" bd add 19=u8:1 -i image
! boardctl: no folder for a backup (expected XDG_STATE_HOME or HOME to name a folder, or --backup FILE)
[1]
$ boardctl bd add 19=u8:1 -i image --backup new >/dev/full; boardctl bd get 19.1 -i image
0100
! boardctl: can't write to standard output: No space left on device
! boardctl: image: was written anyway; the old image is in new
)sh");
}

TEST(BdEdit, SaysWhoHoldsTheLockAndWaitsForItButNotForEver) {
    const TempDir dir;
    ASSERT_EQ(support::Program({BOARDCTL, "sim", "create", dir.path("sim")}).finish().status, 0);
    const std::string image = dir.path("sim/eeprom.bin");
    const int held = ::open(image.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(held, LOCK_EX), 0);
    const std::string put =
        "exec \"$0\" bd put 19=u8:2 -q -i \"$1\" --backup \"$1.old\" --wait 3600 2>&1";
    const std::string locked = image + ": is locked by process " + std::to_string(::getpid());
    {
        support::Program waiting({"/bin/sh", "-c", put, BOARDCTL, image});
        EXPECT_TRUE(waiting.waitForOutput(locked + "; waiting up to 3600 s"));
        waiting.signal(SIGINT);
        EXPECT_EQ(waiting.finish().status, 128 + SIGINT);
    }
    support::Program waiting({"/bin/sh", "-c", put, BOARDCTL, image});
    EXPECT_TRUE(waiting.waitForOutput(locked + "; waiting up to 3600 s"));
    const std::vector<std::string> reads[] = {
        {"bd", "dump", image},
        {"bd", "check", "--board", dir.path("sim/board.toml")},
        {"bd", "get", "5", "-i", image},
        {"bd", "compare", image, image},
        {"bd", "build", image, "-o", dir.path("new")},
        {"bd", "write", image, "-i", image}};
    for (std::vector<std::string> words : reads) {
        words.insert(words.begin(), BOARDCTL);
        words.insert(words.end(), {"--wait", "0"});
        const support::Outcome read = support::Program(words).finish();
        EXPECT_EQ(read.status, 1);
        EXPECT_EQ(read.err, "boardctl: " + locked + "\n") << words[2];
    }
    ::close(held);
    EXPECT_EQ(waiting.finish().status, 0);
}

TEST(BdEdit, ShowsTheControlCharactersOfPathsAsCodes) {
    expectTranscript(TempDir(), R"sh(
$ boardctl sim create "$(printf 'a\033b')"; mv a?b/eeprom.bin "$(printf 'i\tj')"
created a\x1bb/board.toml; try: boardctl --board a\x1bb/board.toml info
$ boardctl bd remove 5 -i i?j --backup "$(printf 'k\007')" | tail -n 1
i\x09j: written; the old image is in k\x07
$ boardctl bd write k? -i i?j --backup 2; boardctl bd check i?j k? | cut -d ' ' -f 1; boardctl bd compare i?j k?
i\x09j: 7 tags in 74 bytes
i\x09j: written; the old image is in 2
i\x09j:
k\x07:
k\x07: 7 tags, as expected
$ printf '[{"id":5,"text":"a"}]' >tags; boardctl bd build tags -o i?j --backup "$(printf '3\r')"
i\x09j: written; the old file is in 3\x0d
)sh");
}

TEST(BdEdit, AsksBeforeADeviceIsChanged) {
    const TempDir dir;
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_EQ(::grantpt(terminal) | ::unlockpt(terminal), 0);
    const std::string name = ::ptsname(terminal);
    const int held = ::open(name.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_EQ(::write(terminal, "\ny\nyes\n", 7), 7);
    std::filesystem::create_symlink(name, dir.path("terminal"));
    expectTranscript(dir, R"sh(
$ boardctl sim create sim >messages; boardctl --board sim/board.toml bd remove 5
- 4 Tag5 (5): 53494d2d303030303031  "SIM-000001"
! boardctl: sim/eeprom.bin: is a board's device, and standard input is not a terminal to ask on (expected -y); nothing was written
[4]
$ boardctl --board sim/board.toml bd remove 5 <terminal
- 4 Tag5 (5): 53494d2d303030303031  "SIM-000001"
! Write this to sim/eeprom.bin? [y/N] boardctl: sim/eeprom.bin: nothing was written
[4]
$ boardctl --board sim/board.toml bd remove 5 --backup 1 <terminal 2>messages
- 4 Tag5 (5): 53494d2d303030303031  "SIM-000001"
sim/eeprom.bin: written; the old image is in 1
$ json --board sim/board.toml bd remove 2 --backup 2 <terminal 2>messages
{ "image": "sim/eeprom.bin", "device": true, "result": "written", "changes": [ { "position": 3, "id": 2, "name": "Tag2", "old": "c000020a", "new": null } ], "written": true, "backup": "2", "simulated": true }
)sh");
    ::close(held);
    ::close(terminal);
}
