#include <filesystem>
#include <random>

#include "apps/ProgramTest.h"
#include "support/PngPicture.h"

namespace cqsurvey::cqjob {
namespace {

class ImageCommandTest : public ProgramTest {
 protected:
    ImageCommandTest() { Run({"new", job}); }

    CqjobRun Store(const std::string& file, const std::vector<std::string>& options = {},
                   int status = 0) {
        std::vector<std::string> arguments = {
            "image", "store",   job,   file,       "--east", "1234567.125", "--north",
            "-5000", "--width", "120", "--height", "80.5",   "--any-format"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return Run(arguments, status);
    }

    static std::string MakeBytes(std::size_t count) {
        std::mt19937 random(7);
        std::string bytes(count, '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(random() & 0xFFU);
        }
        return bytes;
    }
};

TEST_F(ImageCommandTest, GivesBackTheBytesThatWereStored) {
    const std::string bytes = MakeBytes(3 * 1048576 + 17);
    Store(WriteFile("big.jpg", bytes));
    const std::string copy = folder.Utf8("copy.jpg");
    EXPECT_EQ(Run({"image", "fetch", job, copy}).out, "");
    EXPECT_TRUE(ReadFile(copy) == bytes);
    const std::string small = WriteFile("small.jpg", "a\r\nb");
    Store(small, {"--force"});
    EXPECT_EQ(Run({"image", "fetch", job, "-"}).out, "a\r\nb");
}

TEST_F(ImageCommandTest, SaysWhereTheImageLies) {
    EXPECT_TRUE(Holds(Run({"image", "info", job}).out, "Image           none\n"));
    EXPECT_TRUE(Holds(Run({"image", "info", job, "--json"}).out, "\"stored\": false,"));
    Store(WriteFile("a.jpg", "abc"), {"--rotation", "12.5", "--type", "3"});
    const std::string text = Run({"image", "info", job}).out;
    EXPECT_TRUE(Holds(text, "Image           3 bytes, type 3\n"));
    EXPECT_TRUE(Holds(text, "Centre          easting 1234567.125, northing -5000.000\n"));
    EXPECT_TRUE(Holds(text, "Size            120.000 by 80.500\n"));
    const std::string json = Run({"image", "info", job, "--json"}).out;
    for (const char* member :
         {"\"stored\": true,", "\"bytes\": 3,", "\"type\": 3,", "\"east\": 1234567.125,",
          "\"north\": -5000,", "\"width\": 120,", "\"height\": 80.5,", "\"rotation\": 12.5,",
          "\"brightness\": 0,", "\"contrast\": 100,", "\"background_color\": 16777215"}) {
        EXPECT_TRUE(Holds(json, member));
    }
}

TEST_F(ImageCommandTest, RefusesWhatIsNoImage) {
    const std::string before = ReadFile(job);
    for (const char* text : {"P1,1,2,3\n", "  0\nSECTION\n", "BMW,1,2,3,4\n"}) {
        const std::string file = WriteFile("a.jpg", text);
        const CqjobRun run = Run({"image", "store", job, file, "--east", "1", "--north", "2",
                                  "--width", "3", "--height", "4"},
                                 1);
        EXPECT_TRUE(Holds(run.err, file + ": is no PNG, JPEG, BMP, TIFF, GIF or WebP image"));
    }
    EXPECT_TRUE(ReadFile(job) == before);
}

TEST_F(ImageCommandTest, AWorldFileBesideTheImageSaysWhereItLies) {
    const std::string image = folder.Utf8("ortho.png");
    ASSERT_TRUE(PngPicture::WriteRow(image, std::vector<PixelColor>(100, {1, 2, 3})));
    EXPECT_TRUE(Holds(Run({"image", "store", job, image}, 2).err, "a world file beside it"));
    WriteFile("ortho.pgw", "0.5\r\n0\r\n0\r\n-2.0\r\n1000.25\r\n4999.0\r\n");
    EXPECT_TRUE(Holds(Run({"image", "store", job, image}).err, "placed by "));
    const std::string text = Run({"image", "info", job}).out;
    EXPECT_TRUE(Holds(text, "Centre          easting 1025.000, northing 4999.000\n"));
    EXPECT_TRUE(Holds(text, "Size            50.000 by 2.000\n"));
    EXPECT_TRUE(Holds(text, "Rotation        0.000\n"));
    Run({"image", "store", job, image, "--force", "--east", "1"}, 2);
    WriteFile("ortho.pgw", "0.5 0 0 2.0 1000.25 4999.0");
    EXPECT_TRUE(Holds(Run({"image", "store", job, image, "--force"}, 1).err, "mirror image"));
}

TEST_F(ImageCommandTest, TellsInJsonWhatItDid) {
    const std::string stored = Store(WriteFile("a.jpg", "abc"), {"--json"}).out;
    EXPECT_TRUE(Holds(stored, "\"bytes\": 3,"));
    EXPECT_EQ(stored, Run({"image", "info", job, "--json"}).out);
    const std::string copy = folder.Utf8("copy.jpg");
    const std::string head = "{\n  \"job\": \"" + job + "\",\n";
    EXPECT_EQ(Run({"image", "fetch", job, copy, "--json"}).out,
              head + "  \"file\": \"" + copy + "\",\n  \"bytes\": 3\n}\n");
    EXPECT_EQ(Run({"image", "fetch", job, "-", "--json"}, 2).out, "");
    EXPECT_EQ(Run({"image", "delete", job, "--json"}).out, head + "  \"stored\": false\n}\n");
}

TEST_F(ImageCommandTest, ReplacesNothingUnlessForced) {
    const std::string first = WriteFile("a.jpg", "abc");
    const std::string second = WriteFile("b.jpg", "defgh");
    Store(first);
    EXPECT_TRUE(Holds(Store(second, {}, 1).err, job + ": already has an image"));
    EXPECT_EQ(Run({"image", "fetch", job, "-"}).out, "abc");
    EXPECT_TRUE(Holds(Run({"image", "fetch", job, second}, 1).err, "--force"));
    EXPECT_EQ(ReadFile(second), "defgh");
    Run({"image", "fetch", job, second, "--force"});
    EXPECT_EQ(ReadFile(second), "abc");
}

TEST_F(ImageCommandTest, DeletesTheImage) {
    Store(WriteFile("a.jpg", "abc"));
    Run({"image", "delete", job});
    EXPECT_TRUE(Holds(Run({"image", "delete", job}, 1).err, job + ": has no image"));
    const std::string file = folder.Utf8("copy.jpg");
    EXPECT_TRUE(Holds(Run({"image", "fetch", job, file}, 1).err, job + ": has no image"));
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_TRUE(Holds(Run({"image", "info", job}).out, "Image           none\n"));
}

TEST_F(ImageCommandTest, AFileThatCannotBeStoredChangesNothing) {
    const std::string before = ReadFile(job);
    const std::string missing = folder.Utf8("missing.jpg");
    EXPECT_TRUE(Holds(Store(missing, {}, 1).err, missing));
    EXPECT_TRUE(Holds(Store(folder.Utf8(""), {}, 1).err, folder.Utf8("")));
    const std::string empty = WriteFile("empty.jpg", "");
    EXPECT_TRUE(Holds(Store(empty, {}, 1).err, empty + ": is empty"));
    const std::string good = WriteFile("a.jpg", "abc");
    Store(good, {"--rotation", "north"}, 2);
    Run({"image", "store", job, good, "--east", "1", "--north", "2", "--width", "3"}, 2);
    Run({"image", job}, 2);
    EXPECT_TRUE(Holds(Store(job, {}, 2).err, job + ": is the job itself"));
    Run({"image", "fetch", job, job, "--force"}, 2);
    EXPECT_EQ(ReadFile(job), before);
}

}  // namespace
}  // namespace cqsurvey::cqjob
