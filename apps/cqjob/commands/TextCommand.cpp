#include <cqsurvey/cqsurvey.h>

#include <algorithm>
#include <array>

#include "cqjob/Arguments.h"
#include "cqjob/Command.h"
#include "cqjob/Failure.h"
#include "cqjob/JobChange.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/drawing/EntityOptions.h"
#include "cqjob/drawing/PlaceArgument.h"
#include "text/NumberText.h"

namespace cqsurvey::cqjob {

namespace {

const std::vector<std::string> kAcross{"left", "centre", "right"};
const std::vector<std::string> kUp{"baseline", "bottom", "middle", "top"};
constexpr int kHalf = 16;
constexpr int kLow = 0xFFFF;

int FindWord(const std::vector<std::string>& words, const std::optional<std::string>& word,
             int other) {
    return word ? static_cast<int>(std::find(words.begin(), words.end(), *word) - words.begin())
                : other;
}

class TextCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command = program.AddCommand("text", "Write, change and delete texts");
        command.RequireCommand();
        command.SetFooter(
            "Example:\n"
            "  cqjob text add site.job P1 \"Mill Road\" --height 2 --rotation 35\n"
            "  cqjob text edit site.job 214 --text \"Upper Mill Road\"");

        m_add = &command.AddCommand("add", "Write a text at a place");
        AddJob(*m_add, "The job");
        m_add->AddRequired("PLACE", m_place, "Where");
        m_add->AddRequired("TEXT", m_text, "The text");
        AddOptions(*m_add, "Its height; 1 without it");
        m_add->SetFooter(std::string(kPlaceArgument) +
                         "\n"
                         "Example:\n"
                         "  cqjob text add site.job 2000.5,5000 \"Mill Road\" --height 2");

        m_edit = &command.AddCommand("edit", "Change texts");
        AddJob(*m_edit, "The job");
        AddTexts(*m_edit);
        m_edit->Add("--at", m_place, "Move it to a place").Placeholder("PLACE");
        m_edit->Add("--text", m_text, "The new text").Placeholder("TEXT");
        AddOptions(*m_edit, "Its height");
        m_edit->SetFooter("What no option names stays as it is.\n" + std::string(kPlaceArgument) +
                          "\nExample:\n  cqjob text edit site.job 214 --height 3 --color 1");

        m_delete = &command.AddCommand("delete", "Delete texts");
        AddJob(*m_delete, "The job");
        AddTexts(*m_delete);
        AddJson(*m_delete);
        m_delete->SetFooter("Example:\n  cqjob text delete site.job 214 215");
        return command;
    }

    int Run(Console& console) override {
        JobChange change(m_job);
        CqSurveyDB& db = change.GetJob();
        std::vector<CqHandle> texts;
        if (m_add->IsGiven()) {
            texts.push_back(Add(db));
        } else {
            for (const std::string& text : m_texts) {
                texts.push_back(ReadEntityHandle(text));
                const CqCadEntityPtr entity = RequireEntity(db, m_job, texts.back(), EntText);
                if (m_edit->IsGiven()) {
                    Edit(db, *entity);
                } else {
                    db.DeleteText(texts.back());
                }
            }
        }
        change.Commit();
        Tell(console, texts);
        return 0;
    }

 private:
    void AddTexts(CommandLine& command) {
        command.AddRequired("ENTITY", m_texts, "The texts, by their numbers in cqjob entities");
    }

    void AddOptions(CommandLine& command, const std::string& heightHelp) {
        command.Add("--height", m_height, heightHelp).Placeholder("LENGTH").Check(FindNumberFault);
        command.Add("--rotation", m_rotation, "Degrees counter-clockwise from east")
            .Placeholder("DEGREES")
            .Check(FindNumberFault);
        command.Add("--align", m_across, "Where its place is along it: left, centre, right")
            .Placeholder("WORD")
            .OneOf(kAcross);
        command.Add("--valign", m_up, "Where its place is across it: baseline, bottom, middle, top")
            .Placeholder("WORD")
            .OneOf(kUp);
        m_options.AddTo(command, false);
        AddJson(command);
    }

    [[nodiscard]] CString NewText() const {
        CString text = ReadText(*m_text, "the text");
        if (text.empty()) {
            throw UsageError("a text cannot be empty");
        }
        return text;
    }

    [[nodiscard]] double NewHeight(double other) const {
        const double height = m_height ? ParseNumber(*m_height).value : other;
        if (m_height && !(height > 0.0)) {
            throw UsageError("the height of a text must be above 0");
        }
        return height;
    }

    [[nodiscard]] double NewRotation(double other) const {
        return m_rotation ? ParseNumber(*m_rotation).value : other;
    }

    CqHandle Add(CqSurveyDB& db) const {
        const Place place = ReadPlace(db, m_job, *m_place);
        m_options.Choose(db, m_job);
        return db.AddText(place.coords.data(), NewText(), FindWord(kAcross, m_across, 0),
                          FindWord(kUp, m_up, 0), CString(), NewHeight(1.0), NewRotation(0.0),
                          m_options.GetCode(0), 0, 0, 0);
    }

    void Edit(CqSurveyDB& db, const CqCadEntity& text) const {
        if (!m_place && !m_text && !m_height && !m_rotation && !m_across && !m_up &&
            !m_options.IsGiven()) {
            throw UsageError("there is nothing to change; use --text, --height, --at ...");
        }
        std::array<double, 3> coords{};
        text.GetPoint(coords.data());
        if (m_place) {
            coords = ReadPlace(db, m_job, *m_place).coords;
        }
        db.EditText(text.GetHandle(), coords.data(), m_text ? NewText() : text.GetText(),
                    FindWord(kAcross, m_across, text.GetAlign() & kLow),
                    FindWord(kUp, m_up, (text.GetAlign() >> kHalf) & kLow), text.GetStyle(),
                    NewHeight(text.GetHeight()), NewRotation(text.GetRot()),
                    m_options.GetCode(text.GetCode()), text.GetOptionStyle(), text.GetInterval(),
                    text.GetThickness());
        m_options.Apply(db, m_job, text.GetHandle());
    }

    void Tell(Console& console, const std::vector<CqHandle>& texts) const {
        if (m_json) {
            Answer(console, [&](JsonWriter& json) { json.Values("texts", texts); });
        } else if (m_add->IsGiven()) {
            console.Print("{}\n", texts.front());
        }
    }

    std::optional<std::string> m_place;
    std::optional<std::string> m_text;
    std::vector<std::string> m_texts;
    std::optional<std::string> m_height;
    std::optional<std::string> m_rotation;
    std::optional<std::string> m_across;
    std::optional<std::string> m_up;
    EntityOptions m_options;
    CommandLine* m_add = nullptr;
    CommandLine* m_edit = nullptr;
    CommandLine* m_delete = nullptr;
};

}  // namespace

std::unique_ptr<Command> MakeTextCommand() {
    return std::make_unique<TextCommand>();
}

}  // namespace cqsurvey::cqjob
