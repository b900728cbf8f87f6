// SPDX-License-Identifier: LicenseRef-HXAux
// The reset program matches its source and resets an emulated processor.
#include "testing/FileContent.h"
#include "testing/TemporaryFolder.h"
#include "upgrade/STM32/stm32_bootloader.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace reset_program_test {

using testing::HasSubstr;
using testing::Not;

namespace {

using Image = std::vector<std::uint8_t>;

Image checkedIn()
{
    return {stmreset_binary, stmreset_binary + stmreset_length};
}

std::uint32_t wordAt(const Image& image, std::size_t offset)
{
    std::uint32_t word = 0;
    std::memcpy(&word, image.data() + offset, sizeof word);
    return word;
}

bool has(const char* program)
{
    return std::system((std::string{"command -v "} + program + " >/dev/null").c_str()) == 0;
}

void write(const std::string& name, const Image& image, std::size_t size)
{
    std::ofstream{name, std::ios::binary}.write(reinterpret_cast<const char*>(image.data()),
                                                static_cast<std::streamsize>(size));
}

std::string outputOf(const std::string& command)
{
    std::string text;
    std::FILE* pipe = popen(command.c_str(), "r");
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
        text += static_cast<char>(c);
    pclose(pipe);
    return text;
}

/// Runs the image in the RAM of an emulated Cortex-M3 as a bootloader starts it, and returns what the emulator reports:
/// events, and the last word of the image with the three words after it. Those contained garbage before.
std::string emulate(const Image& image)
{
    const TemporaryFolder folder;
    write(folder / "image", image, image.size());
    write(folder / "vectors", image, 8); // location of stack pointer and entry for a start from flash
    const std::string machine = "qemu-system-arm -S -M netduino2 -nographic -serial none -monitor none -qmp stdio "
                                "-action reboot=shutdown,shutdown=pause -kernel " +
                                (folder / "vectors") +
                                " -device loader,addr=0x20000200,force-raw=on,file=" + (folder / "image") +
                                " -device loader,addr=0x200003ac,data=0xdeadbeefdeadbeef,data-len=8"
                                " -device loader,addr=0x200003b4,data=0xdeadbeef,data-len=4";
    const std::string report = folder / "report";
    // The processor starts once the emulator reports events: a reset before that would be missed. A busy machine may
    // need long for the few instructions: it has until it reports the reset, at most ten seconds.
    const std::string commands =
        R"((echo '{"execute":"qmp_capabilities"}{"execute":"cont"}'; n=0; )"
        "until grep -qs guest-reset " +
        report +
        R"( || [ $n -ge 50 ]; do n=$((n + 1)); sleep 0.2; done; )"
        R"(echo '{"execute":"human-monitor-command","arguments":{"command-line":"xp /4wx 0x200003a8"}}'; )"
        R"(echo '{"execute":"quit"}'; sleep 1))";
    write(report, {}, 0);
    return outputOf(commands + " | timeout 60 " + machine + " >" + report + " 2>&1; cat " + report);
}

} // namespace

TEST(ResetProgram, IsOnePieceOf428BytesFor0x20000200)
{
    const Image image = checkedIn();

    EXPECT_EQ(stmreset_length, 428U);
    EXPECT_EQ(wordAt(image, 0), 0x20006200U) << "the stack";
    EXPECT_EQ(wordAt(image, 4) & 1U, 1U) << "the entry is Thumb code";
    EXPECT_GT(wordAt(image, 4), 0x20000200U);
    EXPECT_LT(wordAt(image, 4), 0x20000200U + 428);
}

TEST(ResetProgram, MatchesItsSource)
{
    if (!has("clang") || !has("ld.lld") || !has("objcopy"))
        GTEST_SKIP() << "needs clang, lld and binutils";
    const TemporaryFolder folder;

    ASSERT_EQ(std::system(std::string{HX_RESET_SOURCE}.append("/build.sh ").append(folder / "image").c_str()), 0);

    const std::string built = fileContent(folder / "image");
    EXPECT_EQ(Image(built.begin(), built.end()), checkedIn());
}

TEST(ResetProgram, ResetsAnEmulatedProcessorAndPreparesItsMemory)
{
    if (!has("qemu-system-arm"))
        GTEST_SKIP() << "needs qemu-system-arm";

    const std::string report = emulate(checkedIn());

    EXPECT_THAT(report, HasSubstr(R"("reason": "guest-reset")"));
    // The data as loaded, its copy, the number of requests, and a word that stays zero.
    EXPECT_THAT(report, HasSubstr("200003a8: 0x05fa0004 0x05fa0004 0x00000001 0x00000000"));
}

TEST(ResetProgram, WithAWrongKeyIsNotHeard)
{
    if (!has("qemu-system-arm"))
        GTEST_SKIP() << "needs qemu-system-arm";
    Image image = checkedIn();
    image.back() ^= 1;

    const std::string report = emulate(image);

    EXPECT_THAT(report, Not(HasSubstr("guest-reset")));
    EXPECT_THAT(report, HasSubstr("200003a8: 0x04fa0004 0x04fa0004 0x00000001 0x00000000")) << "it ran all the same";
}

} // namespace reset_program_test
