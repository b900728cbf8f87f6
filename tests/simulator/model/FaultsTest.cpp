// SPDX-License-Identifier: LicenseRef-HXAux
// Which calls an injected failure meets, and how it is written.
#include "simulator/model/Faults.h"

#include "testing/RowTest.h"
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

class WrittenFault : public hxtest::TestWithRow<Written> {};

ROW_TEST(WrittenFault, IsUnderstood)
{
    const Fault fault = Faults::parse(row().text);

    EXPECT_EQ(fault.subject, row().subject);
    EXPECT_EQ(fault.call, row().call);
    EXPECT_EQ(fault.error, row().error);
    EXPECT_EQ(fault.count, row().count);
}

TEST_ROWS(Faults, WrittenFault, kNameOfRow, Written{{"Shortest"}, "/dev/x open", "/dev/x", "open", EIO, -1},
          Written{{"Error"}, "/dev/x open EBUSY", "/dev/x", "open", EBUSY, -1},
          Written{{"ErrorByNumber"}, "/dev/x open 16", "/dev/x", "open", 16, -1},
          Written{{"Count"}, "/dev/x open EBUSY 3", "/dev/x", "open", EBUSY, 3},
          Written{{"Request"}, "/dev/x 0x40010003 EIO", "/dev/x", "0x40010003", EIO, -1},
          Written{{"RequestInAnyForm"}, "/dev/x 0XC218004E", "/dev/x", "0xc218004e", EIO, -1},
          Written{{"ShortRequest"}, "/dev/x 0x3", "/dev/x", "0x00000003", EIO, -1},
          Written{{"EveryRegister"}, "/dev/x get EIO", "/dev/x", "get", EIO, -1},
          Written{{"OneRegister"}, "/dev/x put 12 EBUSY 1", "/dev/x", "put 12", EBUSY, 1},
          Written{{"RegisterInHex"}, "/dev/x get 0x0C", "/dev/x", "get 12", EIO, -1},
          Written{{"Anything"}, "* *", "*", "*", EIO, -1});

struct Met : Named {
    const char* text;
    const char* subject;
    const char* call;
    bool meets;
};

class FaultOn : public hxtest::TestWithRow<Met> {};

ROW_TEST(FaultOn, MeetsWhatItNames)
{
    Faults faults;
    faults.add(Faults::parse(row().text));

    EXPECT_EQ(faults.take(row().subject, row().call), row().meets ? EIO : 0);
}

TEST_ROWS(Faults, FaultOn, kNameOfRow, Met{{"Same"}, "/dev/x open", "/dev/x", "open", true},
          Met{{"WithArguments"}, "/dev/x open", "/dev/x", "open rdwr", true},
          Met{{"OtherCall"}, "/dev/x open", "/dev/x", "read", false},
          Met{{"OtherDevice"}, "/dev/x open", "/dev/xy", "open", false},
          Met{{"LongerWord"}, "/dev/x sem_wait", "/dev/x", "sem_waits", false},
          Met{{"Register"}, "/dev/x get 5", "/dev/x", "get 5", true},
          Met{{"OtherRegister"}, "/dev/x get 5", "/dev/x", "get 50", false},
          Met{{"AnyRegister"}, "/dev/x get", "/dev/x", "get 50", true},
          Met{{"Put"}, "/dev/x get", "/dev/x", "put 5", false}, Met{{"AnyDevice"}, "* open", "/dev/y", "open", true},
          Met{{"AnyCall"}, "/dev/x *", "/dev/x", "read 5", true});

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
