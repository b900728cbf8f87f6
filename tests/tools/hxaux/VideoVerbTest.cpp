// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/tools/hxaux/CommandRows.h"

using namespace hxtest;
using testing::AllOf;

const CommandRow kVideoVerbRows[] = {
    {"ShowsEverything",
     "hxaux video status 2",
     AllOf(outputIs("shown: off\nfields: both\nmirrored: off\nchannel: 1\nstandard: ntsc-m\n"
                    "raw image: 720, 480, 30.00\narea: 0, 0, 720, 576\nscale x: 1.0000\nscale y: 1.0000\n"
                    "cropping: 0, 0, 0, 0\ncolor key: 0, 0, 0\n"),
           errorIs(""), statusIs(0)),
     {"video.2.standard = ntsc-m"}},
    {"ShowsAndHides", "hxaux video show 1; hx-sim get video.1.shown; hxaux video hide 1; hx-sim get video.1.shown",
     AllOf(outputMatches("on\n.*off\n$"), errorIs(""), statusIs(0))},
    {"LeavesFieldsAndMirroringAsTheyWereSet",
     "hxaux video fields 1 first --mirror on; hx-sim get video.1.fields; hx-sim get video.1.mirrored",
     AllOf(outputMatches("first\n.*on\n$"), errorIs(""), statusIs(0))},
    {"SetsFieldsAndMirroringAgainWithAnyVerb",
     "hxaux video show 1 --fields second --mirror on; hx-sim get video.1.fields; "
     "hx-sim get video.1.mirrored; hx-sim get video.1.shown",
     AllOf(outputMatches("second\n.*on\n.*on\n$"), statusIs(0))},
    {"ReadsFieldsAndMirroringAfterOpening", "hxaux video fields 1; hxaux video mirror 1 --fields first",
     AllOf(outputIs("fields: both\nmirrored: off\n"), errorIs(""), statusIs(0))},
    {"SetsAndReadsChannelAreaCroppingAndColorKey",
     "hxaux video channel 1 3; hxaux video channel 1; hxaux video area 1 1 2 3 4; "
     "hxaux video area 1; hxaux video crop 1 5 1 7 1; hxaux video crop 1; "
     "hxaux video color-key 1 255 0 128; hxaux video color-key 1",
     AllOf(outputIs("channel: 3\narea: 1, 2, 3, 4\ncropping: 4, 1, 6, 1\ncolor key: 255, 0, 128\n"), errorIs(""),
           statusIs(0))},
    {"SetsAndReadsTheScale", "hxaux video scale 1 0.5 0.25; hxaux video scale 1",
     AllOf(outputIs("scale x: 0.5000\nscale y: 0.2510\n"), errorIs(""), statusIs(0))},
    {"PassesOnThatAScaleIsOutOfRange", "hxaux video scale 1 1 0.2",
     AllOf(errorIs("video scale: Invalid data (range) (8)\n"), statusIs(1))},
    {"WantsAllValuesOrNone", "hxaux video area 1 1 2",
     AllOf(errorIs("video area: missing argument: give all 4 values, or none\n"), statusIs(2))},
    {"ReadsAndWritesDecoderRegisters", "hxaux video decoder 1 10 0xf0; hxaux video decoder 1 0x0a",
     AllOf(outputIs("decoder register 10: 240\n"), errorIs(""), statusIs(0))},
    {"ShowsStandardRawImageAndControlByte",
     "hxaux video standard 1; hxaux video raw 1; hxaux video control 1",
     AllOf(outputIs("standard: secam\nraw image: 720, 576, 25.00\ncontrol byte: 4\n"), statusIs(0)),
     {"video.1.standard = secam"}},
    {"MinimizesAndShowsThePreviousArea", "hxaux video minimize 1; hxaux video area 1",
     AllOf(outputIs("area before: 0, 0, 720, 576\narea: 0, 0, 0, 0\n"), errorIs(""), statusIs(0))},
    {"RestoresAMinimisedWindowAtASignal",
     "hxaux video minimize 1 --for 60 & sleep 0.6; hx-sim get video.1.area; kill -TERM $!; wait $!; "
     "hx-sim get video.1.area",
     outputMatches("0 0 0 0\n.*0 0 720 576\n$")},
    {"NamesAnInputWithoutADriver",
     "hxaux video show 2",
     AllOf(errorIs("video show: Open failed (1)\n"), statusIs(1)),
     {"absent = /dev/analog-video2"}},
};
const TestTable kVideoVerb{"VideoVerb", checkOnUnit, kVideoVerbRows};

TEST(VideoVerb, NamesTheRangeOfAScale)
{
    EXPECT_THAT(run("hxaux video scale 1 0.2 1"),
                AllOf(errorIs("video scale: x: 0.2 is outside 0.25 to 4\n"), statusIs(2)));
    EXPECT_THAT(run("hxaux video scale --help"), AllOf(outputMatches("0\\.25 to 4"), outputMatches("0\\.125 to 4")));
}

TEST(VideoVerb, PassesOnThatSnapshotsAreNotSupported)
{
    for (const char* kind : {"activate", "file picture.bmp", "raw", "bitmap", "convert"})
        EXPECT_THAT(onUnit(std::string{"hxaux video snapshot 1 "} + kind),
                    AllOf(errorIs("video snapshot: Not supported (2)\n"), statusIs(1)));
}

TEST(VideoVerb, RefusesAnInputThatDoesNotExist)
{
    EXPECT_THAT(run("hxaux video show 3"), AllOf(errorIs("video show: input: 3 is outside 1 to 2\n"), statusIs(2)));
}
