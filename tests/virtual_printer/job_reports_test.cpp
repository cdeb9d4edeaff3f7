#include <gtest/gtest.h>

#include <string>

#include "test_hosts.h"
#include "virtual_printer/model/printer_model.h"
#include "virtual_printer/model/report_frames.h"

namespace virtual_printer {
namespace {

using std::chrono::milliseconds;

std::string Tag(const std::string& digits) { return V1("setval \"process_id\" \"" + digits + "\""); }

PrinterSetup Times(int printing, int quiet) {
  PrinterSetup setup;
  setup.job_times = {milliseconds(printing), milliseconds(quiet)};
  return setup;
}

// The other frames are understood by the library in whole conversations.
TEST(ReportFrames, OfStatesAndTextsHaveTheirBytes) {
  EXPECT_EQ(Hex(JobState(0).bytes), "1B1C26205631207265706F7274020105000030303030");
  EXPECT_EQ(Hex(TaskOver(7).bytes),
            "1B1C26205632000000300000000000000000"
            "67657476616C20227461736B5F6F766572220D0A00010000"
            "7461736B2533443030303725334273746174652533446F6B");
}

TEST(PrintJobs, StartWithTheirDataAndEndWhenPrinted) {
  Shop shop(Times(500, 200));
  EXPECT_EQ(shop.Send(1, Tag("0007") + "x")[1], "1> print data, 1 byte") << "nobody watches";
  shop.Send(1, kOn + Tag("0007") + "Total");
  EXPECT_EQ(shop.Pass(100), Transcript{});
  EXPECT_EQ(shop.Send(1, " 9.99"), (Transcript{"1> print data, 5 bytes, task 0007"}));
  shop.now += milliseconds(500);
  EXPECT_EQ(shop.Send(1, V1("getval \"reprint_status\"")).front(), "1< report 257: task 0007 ended, status 0x00000000")
      << "what fell due comes before the next answer";
  EXPECT_EQ(shop.UntilDeadline(), -1);
}

TEST(PrintJobs, PrintOneAfterTheOtherUntilTheyAreCleared) {
  Shop shop(Times(500, 200));
  shop.Send(1, kGsHOn + GsH("000001") + "a" + GsH("000002") + "b" + GsH("000003") + "c");
  EXPECT_EQ(shop.Pass(500), (Transcript{"1< reply 37 23: task 0001 ended", "1< reply 37 22: task 0002 started"}));
  EXPECT_EQ(shop.UntilDeadline(), 500);
  EXPECT_EQ(shop.Send(1, kClear).front(), "1> clear tasks, 1 waiting");
  // Time that passes at once changes nothing but the moment of the news.
  EXPECT_EQ(shop.Pass(10000), (Transcript{"1< reply 37 23: task 0002 ended"}));
}

// How the data of a job is known to be complete. Each row begins with a job whose data has just arrived.
TEST(PrintJobs, EndTheirDataWith) {
  const struct {
    const char* name;
    void (*then)(Shop& shop);
    int expected_deadline;
  } rows[] = {
      {"nothing but silence", [](Shop&) {}, 200},
      {"the next task number", [](Shop& shop) { shop.Send(1, Tag("0008")); }, 50},
      {"an ignored task number", [](Shop& shop) { shop.Send(1, Tag("8")); }, 200},
      {"monitoring switched off", [](Shop& shop) { shop.Send(1, kOff); }, 50},
      {"the end of the connection", [](Shop& shop) { shop.Leave(1); }, 50},
      {"more data in time", [](Shop& shop) { shop.Pass(150), shop.Send(1, "y"); }, 200},
      {"data of another host", [](Shop& shop) { shop.Send(2, "y"); }, 200},
      {"a command that is not about jobs", [](Shop& shop) { shop.Send(1, V1("do \"print_feedform\"")); }, 200},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Shop shop(Times(50, 200), /*hosts=*/2);
    shop.Send(2, kOn);
    shop.Send(1, Tag("0007") + "x");
    row.then(shop);
    EXPECT_EQ(shop.UntilDeadline(), row.expected_deadline);
    EXPECT_EQ(shop.Pass(row.expected_deadline).at(0), "2< report 257: task 0007 ended, status 0x00000000");
  }
}

TEST(PrintJobs, TakeTheNumberThatTheirHostSetLastAndLoseItToAPause) {
  Shop shop({}, /*hosts=*/2);
  shop.Send(1, kOn + Tag("0007") + GsH("000008"));
  EXPECT_EQ(shop.Send(2, "x")[0], "2> print data, 1 byte, job without a number");
  EXPECT_EQ(shop.Send(1, "x")[0], "1> print data, 1 byte, task 0008");
  for (const std::string& forgetting : {std::string(), kOff + kOn, GsH("200") + "\n"}) {
    shop.Pass(5000);
    shop.Send(1, forgetting.empty() ? forgetting : Tag("0009") + forgetting);
    EXPECT_EQ(shop.Send(1, "x")[0], "1> print data, 1 byte, job without a number");
  }
}

TEST(PrintJobs, AreReportedInTheMannerForcedOrThatOfEachHost) {
  PrinterSetup setup;
  setup.monitoring = ReportFamily::kV1;
  setup.forced_family = ReportFamily::kGsH;
  EXPECT_EQ(Shop(setup).Send(1, kOn + "x").at(2), "1< reply 37 22: task 0000 started");
  setup.forced_family.reset();
  EXPECT_EQ(Shop(setup).Send(1, "x").back(), "1< report 256: task 0000 started");
  Shop shop({}, /*hosts=*/3);
  shop.Send(1, kOn);
  shop.Send(2, kGsHOn);
  EXPECT_EQ(shop.Send(3, "x"), (Transcript{"3> print data, 1 byte, job without a number",
                                           "1< report 256: task 0000 started", "2< reply 37 22: task 0000 started"}));
}

// A host whose connection broke comes back and does not switch monitoring on again.
TEST(PrintJobs, AreReportedToTheNextConnectionOfALostHost) {
  Shop shop({}, /*hosts=*/2);
  shop.Send(1, kGsHOn + GsH("000007") + "x");
  shop.Leave(1);
  shop.model.Connect(3);
  shop.model.Connect(4);
  EXPECT_EQ(shop.Pass(500), (Transcript{"3< reply 37 23: task 0007 ended"}));
  shop.Send(3, GsH("100"));
  shop.Leave(3);
  shop.model.Connect(5);
  EXPECT_EQ(shop.Send(2, "x"), (Transcript{"2> print data, 1 byte"}));
}

TEST(PrintJobs, EndWithAV2AnswerForTheHostThatSentThem) {
  PrinterSetup setup;
  setup.task_over = true;
  Shop shop(setup, /*hosts=*/2);
  shop.Send(1, Tag("0007") + "x");
  shop.Send(2, kOn + "y");
  EXPECT_EQ(shop.Pass(500), (Transcript{"2< report 257: task 0007 ended, status 0x00000000",
                                        "1< V2 answer: task=0007;state=ok", "2< report 256: task 0000 started"}));
  shop.Leave(2);
  EXPECT_EQ(shop.Pass(500), Transcript{});
}

}  // namespace
}  // namespace virtual_printer
