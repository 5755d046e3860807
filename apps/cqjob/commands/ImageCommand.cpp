#include <cqsurvey/cqsurvey.h>
#include <cqsurvey/exchange/ImageHeader.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <optional>

#include "cqjob/Arguments.h"
#include "cqjob/Command.h"
#include "cqjob/Failure.h"
#include "cqjob/InputFile.h"
#include "cqjob/JobChange.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/OutputFile.h"
#include "cqjob/images/StoredImage.h"
#include "cqjob/images/WorldFile.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

using exchange::ImageHeader;

namespace {

/// A number of the image's settings as it is stored; the library reads it less exactly.
std::string GetPlace(CqSurveyDB& db, const char16_t* key) {
    CString value;
    db.GetSettingsString(CqSurveyDB::m_BGSettingsSection, key, value, u"0");
    return ToUtf8(value);
}

class ImageCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command =
            program.AddCommand("image", "Store, fetch and delete the image behind the drawing");
        command.RequireCommand();
        command.SetFooter(
            "Example:\n"
            "  cqjob image store site.job ortho.jpg --east 2000 --north 5000 --width 120 \\\n"
            "      --height 80\n"
            "  cqjob image fetch site.job copy.jpg");

        m_store = &AddAction(command, "store", "Copy an image into the job",
                             [this](Console& console) { Store(console); });
        AddJob(*m_store, "The job");
        m_store->AddRequired("FILE", m_file, "The image: PNG, JPEG, BMP, TIFF, GIF or WebP");
        AddNumber("--east", m_east, "Easting of the image's centre");
        AddNumber("--north", m_north, "Northing of the image's centre");
        AddNumber("--width", m_width, "Its size along the easting");
        AddNumber("--height", m_height, "Its size along the northing");
        AddNumber("--rotation", m_rotation, "Rotation; cqjob plot takes degrees, counter-clockwise")
            .ShowDefault();
        m_store->AddFlag("--any-format", m_anyFormat,
                         "Store a file that is none of these images, too");
        m_store->Add("--type", m_type, "Number of the format, for programs that need one")
            .Placeholder("N")
            .ShowDefault();
        m_store->AddFlag("--force", m_force, "Replace an existing image");
        AddJson(*m_store);
        m_store->SetFooter(
            "Without --east, --north, --width and --height the place comes from the world file\n"
            "beside the image: site.pgw, .jgw, .bpw, .tfw or .wld.\n"
            "\n"
            "The placement is kept to three decimal places. Brightness, Contrast, Monotone and\n"
            "BKColor are set by cqjob settings set, in section BACKGROUND.\n"
            "\n"
            "Example:\n"
            "  cqjob image store site.job ortho.jpg\n"
            "  cqjob image store site.job ortho.jpg --east 2000 --north 5000 --width 120 \\\n"
            "      --height 80 --rotation 12.5");

        CommandLine& fetch = AddAction(command, "fetch", "Write the job's image to a file",
                                       [this](Console& console) { Fetch(console); });
        AddJob(fetch, "The job; it is not changed");
        fetch.AddRequired("FILE", m_file, "The file to write, - for standard output");
        fetch.AddFlag("--force", m_force, "Replace an existing file");
        AddJson(fetch);
        fetch.SetFooter("Example:\n  cqjob image fetch site.job copy.jpg");

        CommandLine& info = AddAction(command, "info", "Show which image the job has, and where",
                                      [this](Console& console) { Info(console); });
        AddJob(info, "The job; it is not changed");
        AddJson(info);
        info.SetFooter("Example:\n  cqjob image info site.job");

        CommandLine& remove = AddAction(command, "delete", "Delete the job's image",
                                        [this](Console& console) { Delete(console); });
        AddJob(remove, "The job");
        AddJson(remove);
        remove.SetFooter("Example:\n  cqjob image delete site.job");
        return command;
    }

 private:
    Argument AddNumber(const std::string& name, std::string& value, const std::string& help) {
        return m_store->Add(name, value, help).Placeholder("NUMBER").Check(FindNumberFault);
    }

    static double Number(const std::string& text) { return ParseNumber(text).value; }

    /// The world file that says where the image lies; nothing when the options do.
    [[nodiscard]] std::optional<std::string> FindWorldFile() const {
        constexpr std::array kPlace = {"--east", "--north", "--width", "--height"};
        const auto given = static_cast<std::size_t>(
            std::count_if(kPlace.begin(), kPlace.end(),
                          [this](const char* option) { return m_store->IsGiven(option); }));
        if (given == kPlace.size()) {
            return std::nullopt;
        }
        std::optional<std::string> world;
        if (given == 0 && !m_store->IsGiven("--rotation")) {
            world = WorldFile::Find(m_file);
        }
        if (!world) {
            throw UsageError(
                "--east, --north, --width and --height say together where the image lies, or "
                "without any of them a world file beside it does");
        }
        return world;
    }

    CqImagePlace ReadWorldFile(Console& console, const std::string& world,
                               const std::optional<ImageHeader>& header) const {
        constexpr std::uint64_t kMostBytes = 10000;
        const CqImagePlace place = WorldFile::Read(world, ReadInputFile(world, kMostBytes),
                                                   header.value_or(ImageHeader{"unknown", 0, 0}));
        console.Say("{}: placed by {}\n", Printable(m_file), Printable(world));
        return place;
    }

    /// The image's header; nothing for another file that is to be stored all the same.
    [[nodiscard]] std::optional<ImageHeader> RequireImage() const {
        if (GetReadableLength(m_file) == 0) {
            throw Failure(m_file, "is empty, so it is not an image");
        }
        std::ifstream file(m_file, std::ios::binary);
        constexpr std::size_t kLooked = std::size_t{4} << 20U;
        std::string bytes(kLooked, '\0');
        file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        bytes.resize(static_cast<std::size_t>(file.gcount()));
        const std::optional<ImageHeader> header = ImageHeader::Find(bytes);
        if (!header && !m_anyFormat) {
            throw Failure(m_file,
                          "is no PNG, JPEG, BMP, TIFF, GIF or WebP image; --any-format stores "
                          "it all the same");
        }
        return header;
    }

    void Store(Console& console) const {
        RequireOtherFile(m_file, m_job);
        const CString source = ToJobPath(m_file);
        const std::optional<std::string> world = FindWorldFile();
        const std::optional<ImageHeader> header = RequireImage();
        const CqImagePlace place =
            world ? ReadWorldFile(console, *world, header)
                  : CqImagePlace{Number(m_east), Number(m_north), Number(m_width), Number(m_height),
                                 Number(m_rotation)};
        // A copy that fails half-way leaves what it wrote. Without a Commit that is undone.
        JobChange change(m_job);
        CqSurveyDB& db = change.GetJob();
        if (!m_force && db.IsBackgroundImageFile() != 0) {
            throw Failure(m_job, "already has an image; --force replaces it");
        }
        if (db.StoreBackgroundImageFile(source, m_type, CVector(place.east, place.north),
                                        CVector(place.width, place.height), place.rotation) == 0) {
            throw Failure(m_job,
                          "{} could not be read, or there is no room for it; nothing was changed",
                          Printable(m_file));
        }
        change.Commit();
        if (m_json) {
            Info(console);
        }
    }

    void Fetch(Console& console) const {
        RequireOtherFile(m_file, m_job);
        RequireOwnOutput(m_file);
        CqSurveyDB db;
        OpenToRead(db, m_job);
        if (db.IsBackgroundImageFile() == 0) {
            FailWithout();
        }
        const std::optional<StoredImage> image = StoredImage::Read(db);
        if (!image) {
            throw Failure(m_job, "the image is empty or cannot be read");
        }
        db.Close();
        OutputFile output(console, m_file, m_force);
        // In pieces, so that it can be interrupted.
        constexpr std::size_t kPiece = 1U << 20U;
        const std::string_view bytes = image->GetBytes();
        for (std::size_t done = 0; done < bytes.size(); done += kPiece) {
            output.Write(bytes.substr(done, kPiece));
        }
        output.Finish();
        if (m_json) {
            Answer(console, [&](JsonWriter& json) {
                json.Member("file", m_file);
                json.Member("bytes", bytes.size());
            });
        }
    }

    void Info(Console& console) const {
        CqSurveyDB db;
        OpenToRead(db, m_job);
        const bool stored = db.IsBackgroundImageFile() != 0;
        const std::optional<StoredImage> image = StoredImage::Read(db);
        const std::size_t length = image ? image->GetBytes().size() : 0;
        int brightness = 0;
        int contrast = 0;
        int monotone = 0;
        db.GetBackgroundImageSettings(brightness, contrast, monotone);
        const std::string east = GetPlace(db, u"CenterX");
        const std::string north = GetPlace(db, u"CenterY");
        const std::string width = GetPlace(db, u"SizeX");
        const std::string height = GetPlace(db, u"SizeY");
        const std::string rotation = GetPlace(db, u"Rotation");
        const std::string type = GetPlace(db, u"Type");
        if (m_json) {
            Answer(console, [&](JsonWriter& json) {
                json.Member("stored", stored);
                if (stored) {
                    json.Member("bytes", length);
                    json.Member("type", ParseWholeNumber(type).value_or(0));
                    json.Member("east", Number(east));
                    json.Member("north", Number(north));
                    json.Member("width", Number(width));
                    json.Member("height", Number(height));
                    json.Member("rotation", Number(rotation));
                }
                json.Member("brightness", brightness);
                json.Member("contrast", contrast);
                json.Member("monotone", monotone);
                json.Member("background_color", db.GetBackgroundColor());
            });
        } else {
            if (stored) {
                console.Print("Image           {} bytes, type {}\n", length, Printable(type));
                console.Print("Centre          easting {}, northing {}\n", Printable(east),
                              Printable(north));
                console.Print("Size            {} by {}\n", Printable(width), Printable(height));
                console.Print("Rotation        {}\n", Printable(rotation));
            } else {
                console.Print("Image           none\n");
            }
            console.Print("Brightness      {}\nContrast        {}\nMonotone        {}\n",
                          brightness, contrast, monotone);
            console.Print("Background      {}\n", db.GetBackgroundColor());
        }
        db.Close();
    }

    void Delete(Console& console) const {
        JobChange change(m_job);
        if (change.GetJob().DeleteBackgroundImageFile() == 0) {
            FailWithout();
        }
        change.Commit();
        if (m_json) {
            Answer(console, [&](JsonWriter& json) { json.Member("stored", false); });
        }
    }

    [[noreturn]] void FailWithout() const { throw Failure(m_job, "has no image"); }

    CommandLine* m_store = nullptr;
    std::string m_file;
    std::string m_east;
    std::string m_north;
    std::string m_width;
    std::string m_height;
    std::string m_rotation = "0";
    int m_type = 0;
    bool m_anyFormat = false;
    bool m_force = false;
};

}  // namespace

std::unique_ptr<Command> MakeImageCommand() {
    return std::make_unique<ImageCommand>();
}

}  // namespace cqsurvey::cqjob
