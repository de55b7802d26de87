/// \file
/// Input and output files of vorelconv: reading, replacing, and cleaning up after a failure.

#include <filesystem>

#include "Vorelconv.h"
#include "support/TemporaryLog.h"

namespace {

using test::vorelconv;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

/// The files are in a folder whose name contains a space, a Chinese character, an accented letter and a Greek letter.
/// No single-byte code page contains all of them.
class OutputTest : public ::testing::Test {
protected:
    void SetUp() override { std::filesystem::create_directory(m_folder); }

    [[nodiscard]] std::wstring path(const std::wstring& name) const { return m_folder + L"\\" + name; }

    static void write(const std::wstring& path, const std::string& content) {
        const test::Handle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
        DWORD written = 0;
        ASSERT_TRUE(WriteFile(file.get(), content.data(), static_cast<DWORD>(content.size()), &written, nullptr));
    }

    static std::string read(const std::wstring& path) {
        const test::Handle file(
            CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
        EXPECT_TRUE(file) << GetLastError();
        char content[4096];
        DWORD count = 0;
        EXPECT_TRUE(ReadFile(file.get(), content, sizeof content, &count, nullptr));
        return {content, count};
    }

    [[nodiscard]] std::vector<std::wstring> names() const {
        std::vector<std::wstring> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder)) {
            names.push_back(entry.path().filename().wstring());
        }
        return names;
    }

private:
    test::TemporaryFolder m_parent;
    std::wstring m_folder = m_parent.widePath() + L"\\\u4F60 \u00E9\u03B1";
};

TEST_F(OutputTest, ConvertsAFileToAFile) {
    write(path(L"plain"), "AB");
    const test::Captured run = vorelconv({L"base64", path(L"plain"), L"-o", path(L"t\u00E9xt.b64")});
    EXPECT_EQ(run.exitCode, test::kDone);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.error, "");
    EXPECT_EQ(read(path(L"t\u00E9xt.b64")), "QUI=");
    EXPECT_EQ(names().size(), 2U);
}

TEST_F(OutputTest, ReplacesAnExistingFile) {
    write(path(L"out"), "something much longer");
    EXPECT_EQ(vorelconv({L"hex", L"-t", L"AB", L"-o", path(L"out")}).exitCode, test::kDone);
    EXPECT_EQ(read(path(L"out")), "4142");
    EXPECT_THAT(names(), ElementsAre(L"out"));
}

TEST_F(OutputTest, ReplacesTheTargetOfALink) {
    write(path(L"real"), "before");
    const std::wstring link = path(L"link");
    if (!CreateSymbolicLinkW(link.c_str(), L"real", SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE) ||
        GetFileAttributesW(link.c_str()) == INVALID_FILE_ATTRIBUTES) {
        GTEST_SKIP() << "this user or this system cannot create symbolic links";
    }
    EXPECT_EQ(vorelconv({L"hex", L"-t", L"AB", L"-o", link}).exitCode, test::kDone);
    EXPECT_EQ(read(path(L"real")), "4142");
    EXPECT_NE(GetFileAttributesW(link.c_str()) & FILE_ATTRIBUTE_REPARSE_POINT, 0U);
    EXPECT_EQ(names().size(), 2U);
}

TEST_F(OutputTest, ReplacesItsOwnInput) {
    write(path(L"both"), "AB");
    EXPECT_EQ(vorelconv({L"hex", path(L"both"), L"-o", path(L"both")}).exitCode, test::kDone);
    EXPECT_EQ(read(path(L"both")), "4142");
    EXPECT_THAT(names(), ElementsAre(L"both"));
}

TEST_F(OutputTest, FailureLeavesTheExistingFileUnchanged) {
    write(path(L"out"), "before");
    const std::string good(std::size_t{2} << 20, '4');
    const test::Captured run = vorelconv({L"hex", L"-d", L"-o", path(L"out")}, good + "x");
    EXPECT_EQ(run.exitCode, test::kFailed);
    EXPECT_THAT(run.error, EndsWith("expected a hexadecimal digit, found 'x' (0x78)\n"));
    EXPECT_EQ(read(path(L"out")), "before");
    EXPECT_THAT(names(), ElementsAre(L"out"));
}

TEST_F(OutputTest, FailureCreatesNoFile) {
    EXPECT_EQ(vorelconv({L"hex", L"-d", L"-t", L"x", L"-o", path(L"out")}).exitCode, test::kFailed);
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(OutputTest, ReadOnlyFileIsNotReplaced) {
    write(path(L"out"), "before");
    SetFileAttributesW(path(L"out").c_str(), FILE_ATTRIBUTE_READONLY);
    const test::Captured run = vorelconv({L"hex", L"-t", L"x", L"-o", path(L"out")});
    EXPECT_EQ(run.exitCode, test::kFailed);
    EXPECT_THAT(run.error, EndsWith("\\out: is read-only\n"));
    EXPECT_EQ(read(path(L"out")), "before");
    EXPECT_THAT(names(), ElementsAre(L"out"));
    SetFileAttributesW(path(L"out").c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(OutputTest, ReportsFoldersAndMissingFiles) {
    const test::Captured folder = vorelconv({L"hex", path(L"")});
    EXPECT_EQ(folder.exitCode, test::kFailed);
    EXPECT_THAT(folder.error, EndsWith(": is a folder, expected a file\n"));

    const test::Captured intoFolder = vorelconv({L"hex", L"-t", L"x", L"-o", path(L"")});
    EXPECT_EQ(intoFolder.exitCode, test::kFailed);
    EXPECT_THAT(intoFolder.error, EndsWith(": is a folder, expected a file\n"));

    const test::Captured missing = vorelconv({L"hex", path(L"missing")});
    EXPECT_EQ(missing.exitCode, test::kFailed);
    EXPECT_THAT(missing.error, HasSubstr("\xE4\xBD\xA0 \xC3\xA9\xCE\xB1\\missing: cannot be opened: "));
    EXPECT_THAT(missing.error, EndsWith("(error 2)\n"));

    const test::Captured nowhere = vorelconv({L"hex", L"-t", L"x", L"-o", path(L"missing\\out")});
    EXPECT_EQ(nowhere.exitCode, test::kFailed);
    EXPECT_THAT(nowhere.error, HasSubstr("missing\\out: cannot be created: "));
    EXPECT_THAT(nowhere.error, EndsWith("(error 3)\n"));
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(OutputTest, BadInputIsReportedWithTheFileName) {
    write(path(L"bad"), "4\nx");
    const test::Captured run = vorelconv({L"hex", L"-d", path(L"bad")});
    EXPECT_THAT(run.error, EndsWith("\\bad: line 2, offset 2: expected a hexadecimal digit, found 'x' (0x78)\n"));
    EXPECT_THAT(vorelconv({L"hex", L"-d", L"-t", L"x"}).error, StartsWith("vorelconv: --text: line 1, offset 0: "));
}

TEST_F(OutputTest, WritesDirectlyToADeviceAndToStandardOutput) {
    EXPECT_EQ(vorelconv({L"hex", L"-t", L"x", L"-o", L"nul"}).exitCode, test::kDone);
    EXPECT_EQ(vorelconv({L"hex", L"-t", L"x", L"-o", L"-"}).output, "78");
}

TEST_F(OutputTest, RejectsAnEmptyFileName) {
    EXPECT_EQ(vorelconv({L"hex", L""}).exitCode, test::kFailed);
    EXPECT_EQ(vorelconv({L"hex", L"-t", L"x", L"-o", L""}).exitCode, test::kFailed);
}

TEST_F(OutputTest, ClosedPipeEndsTheProgramWithoutAMessage) {
    // The reader closes the pipe while more output is pending than the pipe holds.
    write(path(L"large"), std::string(std::size_t{8} << 20, 'x'));
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    ASSERT_TRUE(CreatePipe(&readEnd, &writeEnd, &inheritable, 0));
    test::Handle reader(readEnd);
    test::Handle writer(writeEnd);
    SetHandleInformation(reader.get(), HANDLE_FLAG_INHERIT, 0);
    test::Handle errors(
        CreateFileW(path(L"errors").c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inheritable, CREATE_NEW, 0, nullptr));
    test::ChildOptions streams;
    streams.output = writer.get();
    streams.error = errors.get();
    const test::ChildProcess child(L"vorelconv", {L"hex", path(L"large")}, streams);
    writer.close();
    char bytes[65536];
    DWORD count = 0;
    for (std::size_t total = 0; total < (std::size_t{5} << 20); total += count) {
        ASSERT_TRUE(ReadFile(reader.get(), bytes, sizeof bytes, &count, nullptr));
    }
    reader.close();
    ASSERT_TRUE(child.wait());
    EXPECT_EQ(child.exitCode(), test::kFailed);
    errors.close();
    EXPECT_EQ(read(path(L"errors")), "");
}

}  // namespace
