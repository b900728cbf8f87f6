// SPDX-License-Identifier: LicenseRef-HXAux
// Which calls an injected failure meets, and how it is written.
#include "simulator/model/Faults.h"

#include "tests/simulator/model/ModelTest.h"

namespace faults_test {

using hxsim::Fault;
using hxsim::Faults;

namespace {

struct Written : Named {
    const char* text;
    const char* subject;
    const char* call;
    int error;
    int count;
};

class WrittenFault : public testing::TestWithParam<Written> {};

TEST_P(WrittenFault, IsUnderstood)
{
    const Fault fault = Faults::parse(GetParam().text);

    EXPECT_EQ(fault.subject, GetParam().subject);
    EXPECT_EQ(fault.call, GetParam().call);
    EXPECT_EQ(fault.error, GetParam().error);
    EXPECT_EQ(fault.count, GetParam().count);
}

INSTANTIATE_TEST_SUITE_P(
    Faults, WrittenFault,
    testing::Values(Written{{"Shortest"}, "/dev/x open", "/dev/x", "open", EIO, -1},
                    Written{{"Error"}, "/dev/x open EBUSY", "/dev/x", "open", EBUSY, -1},
                    Written{{"ErrorByNumber"}, "/dev/x open 16", "/dev/x", "open", 16, -1},
                    Written{{"Count"}, "/dev/x open EBUSY 3", "/dev/x", "open", EBUSY, 3},
                    Written{{"Request"}, "/dev/x 0x40010003 EIO", "/dev/x", "0x40010003", EIO, -1},
                    Written{{"RequestInAnyForm"}, "/dev/x 0XC218004E", "/dev/x", "0xc218004e", EIO, -1},
                    Written{{"ShortRequest"}, "/dev/x 0x3", "/dev/x", "0x00000003", EIO, -1},
                    Written{{"EveryRegister"}, "/dev/x get EIO", "/dev/x", "get", EIO, -1},
                    Written{{"OneRegister"}, "/dev/x put 12 EBUSY 1", "/dev/x", "put 12", EBUSY, 1},
                    Written{{"RegisterInHex"}, "/dev/x get 0x0C", "/dev/x", "get 12", EIO, -1},
                    Written{{"Anything"}, "* *", "*", "*", EIO, -1}),
    kNameOfRow);

struct Met : Named {
    const char* text;
    const char* subject;
    const char* call;
    bool meets;
};

class FaultOn : public testing::TestWithParam<Met> {};

TEST_P(FaultOn, MeetsWhatItNames)
{
    Faults faults;
    faults.add(Faults::parse(GetParam().text));

    EXPECT_EQ(faults.take(GetParam().subject, GetParam().call), GetParam().meets ? EIO : 0);
}

INSTANTIATE_TEST_SUITE_P(Faults, FaultOn,
                         testing::Values(Met{{"Same"}, "/dev/x open", "/dev/x", "open", true},
                                         Met{{"WithArguments"}, "/dev/x open", "/dev/x", "open rdwr", true},
                                         Met{{"OtherCall"}, "/dev/x open", "/dev/x", "read", false},
                                         Met{{"OtherDevice"}, "/dev/x open", "/dev/xy", "open", false},
                                         Met{{"LongerWord"}, "/dev/x sem_wait", "/dev/x", "sem_waits", false},
                                         Met{{"Register"}, "/dev/x get 5", "/dev/x", "get 5", true},
                                         Met{{"OtherRegister"}, "/dev/x get 5", "/dev/x", "get 50", false},
                                         Met{{"AnyRegister"}, "/dev/x get", "/dev/x", "get 50", true},
                                         Met{{"Put"}, "/dev/x get", "/dev/x", "put 5", false},
                                         Met{{"AnyDevice"}, "* open", "/dev/y", "open", true},
                                         Met{{"AnyCall"}, "/dev/x *", "/dev/x", "read 5", true}),
                         kNameOfRow);

TEST(Faults, FailEveryCallWithoutACount)
{
    Faults faults;
    faults.add(Faults::parse("/dev/x read"));

    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(faults.take("/dev/x", "read"), EIO);
    EXPECT_EQ(faults.all().front().state(), "all, hit 5 times");
}

TEST(Faults, BeginAfterTheCallsThatTheyLetPass)
{
    Faults faults;
    faults.add(Fault{.subject = "/dev/x", .call = "read", .error = EIO, .count = 1, .skip = 2});

    EXPECT_EQ(faults.take("/dev/x", "read"), 0);
    EXPECT_EQ(faults.take("/dev/x", "write"), 0) << "does not count";
    EXPECT_EQ(faults.take("/dev/x", "read"), 0);
    EXPECT_EQ(faults.take("/dev/x", "read"), EIO);
    EXPECT_EQ(faults.take("/dev/x", "read"), 0);
}

TEST(Faults, AreTakenInTheOrderInWhichTheyWereAskedFor)
{
    Faults faults;
    faults.add(Faults::parse("/dev/x read EBUSY 1"));
    faults.add(Faults::parse("/dev/x * EACCES 1"));

    EXPECT_EQ(faults.take("/dev/x", "read"), EBUSY);
    EXPECT_EQ(faults.take("/dev/x", "read"), EACCES);
    EXPECT_EQ(faults.take("/dev/x", "read"), 0);
}

TEST(Faults, OfOneSubjectCanBeClearedAlone)
{
    Faults faults;
    faults.add(Faults::parse("/dev/x read"));
    faults.add(Faults::parse("/dev/y read"));

    faults.clear("/dev/x");
    EXPECT_EQ(faults.take("/dev/x", "read"), 0);
    EXPECT_EQ(faults.take("/dev/y", "read"), EIO);

    faults.clear();
    EXPECT_TRUE(faults.empty());
    EXPECT_EQ(faults.take("/dev/y", "read"), 0);
}

TEST(Faults, ThatAreLeftStayBesideANewOneOfTheirKind)
{
    Faults faults;
    faults.add(Faults::parse("/dev/x read EIO 2"));
    faults.add(Faults::parse("/dev/x read EBUSY 1"));

    EXPECT_EQ(faults.all().size(), 2U);
}

TEST(Faults, ShowHowMuchOfThemIsLeft)
{
    EXPECT_EQ((Fault{.subject = "", .call = "", .count = 3, .hits = 0}.state()), "3 left, hit 0 times");
    EXPECT_EQ((Fault{.subject = "", .call = "", .count = 0, .hits = 1}.state()), "none left, hit 1 time");
}

} // namespace

} // namespace faults_test
