// webimport against an HTTP server on 127.0.0.1 that the test runs: a file, a missing file, a
// closed port, a malformed address, servers that flood or redirect for ever, the "maxsize" option,
// and a stop while the server stalls.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "Dataset.h"
#include "InterpreterTestSupport.h"
#include "comp/LocalHttpServer.h"

TEST(WebImport, ReadsAFileFromAServer) {
  LocalHttpServer server;
  RecordingSession run;
  const std::string host = server.Host();
  ASSERT_EQ(run.ErrorOf("d = webimport(\"" + host + "/prices.csv\", \",\");"), "");
  const Dataset& d = *run.session.workspace.datasets.at("d");
  EXPECT_EQ(d.StringValue("item", 0), "bread, white");
  EXPECT_EQ(d.GetVariable("price"), Eigen::Vector2d(1.5, 0.9));
  EXPECT_EQ(run.ErrorOf("e = webimport(\"http://" + host + "/prices.csv\", \",\");"), "");
}

TEST(WebImport, FailuresAreMessages) {
  RecordingSession run;
  int closedPort = 0;
  {
    LocalHttpServer server;
    const std::string host = server.Host();
    const std::string missing = run.ErrorOf("d = webimport(\"" + host + "/other.csv\", \",\");");
    EXPECT_NE(missing.find("Cannot import data from \"http://" + host + "/other.csv\": "),
              std::string::npos)
        << missing;
    EXPECT_NE(missing.find("404"), std::string::npos) << missing;
    closedPort = server.Port();
  }
  const std::string refused = run.ErrorOf("d = webimport(\"127.0.0.1:" + std::to_string(closedPort) +
                                          "/prices.csv\", \",\");");
  EXPECT_NE(refused.find("Cannot import data from"), std::string::npos) << refused;
  EXPECT_NE(run.ErrorOf("d = webimport(\"ftp://host/file\", \",\");")
                .find("The URL provided to \"webimport\" must be of the form \"host/file\"."),
            std::string::npos);
  EXPECT_NE(run.ErrorOf("d = webimport(\"justahost\", \",\");").find("\"host/file\""),
            std::string::npos);
  EXPECT_EQ(run.session.workspace.ID_code("d"), -1);
}

// Endless bodies stop at the size limit, which "maxsize" sets in megabytes; a redirect loop stops
// after ten redirects; the option is checked. Nothing enters the workspace.
TEST(WebImport, LimitsAndTheSizeOption) {
  LocalHttpServer server;
  RecordingSession run;
  const std::string url = "http://" + server.Host();
  for (const std::string path : {"/flood", "/huge"}) {
    const std::string e = run.ErrorOf("d = webimport(\"" + server.Host() + path + "\", \",\", \"maxsize\" = 0.1);");
    EXPECT_NE(e.find("Cannot import data from \"" + url + path +
                     "\": the file is larger than 0.1 MB. The option \"maxsize\" sets another limit in "
                     "megabytes, for example \"maxsize\" = 0.2."),
              std::string::npos)
        << e;
  }
  const std::string loop = run.ErrorOf("d = webimport(\"" + server.Host() + "/loop\", \",\");");
  EXPECT_NE(loop.find("Cannot import data from \"" + url + "/loop\": it was redirected more than 10 times."),
            std::string::npos)
      << loop;
  const std::string prefix = "d = webimport(\"" + server.Host() + "/prices.csv\", \",\", ";
  EXPECT_NE(run.ErrorOf(prefix + "\"maxsize\" = 0.00001);").find("the file is larger than 1e-05 MB."),
            std::string::npos);
  EXPECT_NE(run.ErrorOf(prefix + "\"size\" = 1);")
                .find("Unknown optional argument \"size\" passed to \"webimport\". The function takes only "
                      "the size limit (\"maxsize\" = megabytes) as an optional argument."),
            std::string::npos);
  EXPECT_NE(run.ErrorOf(prefix + "\"maxsize\" = 1, \"maxsize\" = 2);")
                .find("Some optional arguments are provided multiple times."),
            std::string::npos);
  for (const char* bad : {"0", "-1", "nan", "[1 2]", "\"10\""}) {
    EXPECT_NE(run.ErrorOf(prefix + "\"maxsize\" = " + bad + ");")
                  .find("The \"maxsize\" option passed to \"webimport\" must be a positive number of megabytes."),
              std::string::npos)
        << bad;
  }
  EXPECT_EQ(run.session.workspace.ID_code("d"), -1);
  // A limit that the file fits, and none at all.
  ASSERT_EQ(run.ErrorOf(prefix + "\"maxsize\" = 0.001);"), "");
  EXPECT_EQ(run.session.workspace.datasets.at("d")->NumberOfObservations(), 2);
  ASSERT_EQ(run.ErrorOf(prefix + "\"maxsize\" = inf);"), "");
}

// A stop (Ctrl+C in a batch run, the stop button in the window) ends a download from a server
// that never answers, long before any time limit, and the statement leaves nothing behind.
TEST(WebImport, StopEndsAStalledDownload) {
  LocalHttpServer server;
  RecordingSession run;
  std::thread stopper([&run] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    run.session.interruptRequested = true;
  });
  const auto start = std::chrono::steady_clock::now();
  bool interrupted = false;
  try {
    RunProgram(run.session, "d = webimport(\"" + server.Host() + "/stall\", \",\");", "\"test.tvx\"", 0);
  } catch (const TavixInterrupted&) {
    interrupted = true;
  }
  const double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  stopper.join();
  EXPECT_TRUE(interrupted);
  EXPECT_LT(elapsed, 3.0);
  EXPECT_EQ(run.session.workspace.ID_code("d"), -1);
}
