#include "gdal/write/DatasetStep.h"

#include <memory>

#include "gdal/GdalJob.h"

namespace cqsurvey::gdal {
namespace {

class DatasetStepTest : public GdalJob {
 protected:
    void SetUp() override {
        DrawSome();
        dataset = Open();
        job = SharedJob::Open(Path());
        context.reset(new LayerContext{*job, *dataset});
    }
    void TearDown() override { job->StopWriting(context->writes); }

    void AddOne() { AddPoint(job->Db(), u"new", 1, 2); }
    [[nodiscard]] int Points() { return job->Db().GetNumCoordRecs(); }

    Dataset dataset;
    SharedJob::Lease job;
    std::unique_ptr<LayerContext> context;
};

TEST_F(DatasetStepTest, AStepThatIsNotKeptIsUndone) {
    {
        const DatasetStep step(*context);
        AddOne();
        EXPECT_EQ(Points(), 21);
    }
    EXPECT_EQ(Points(), 20);
    EXPECT_TRUE(context->writes);
}

TEST_F(DatasetStepTest, AStepThatIsKeptStaysAndTheOthersSeeThatSomethingChanged) {
    const std::uint64_t before = job->Version();
    {
        DatasetStep step(*context);
        AddOne();
        step.Keep();
    }
    EXPECT_EQ(Points(), 21);
    EXPECT_NE(job->Version(), before);
    EXPECT_FALSE(job->HasBatchOf(*dataset));
}

TEST_F(DatasetStepTest, InATransactionOfItsDatasetAStepBelongsToThat) {
    context->Write();
    job->BeginBatch(*dataset);
    const std::uint64_t before = job->Version();
    {
        DatasetStep step(*context);
        AddOne();
        step.Keep();
    }
    EXPECT_NE(job->Version(), before);
    EXPECT_TRUE(job->HasBatchOf(*dataset));
    { const DatasetStep refused(*context); }
    EXPECT_TRUE(job->HasBatchOf(*dataset));
    EXPECT_EQ(Points(), 21);
    job->UndoBatch();
    EXPECT_EQ(Points(), 20);
}

TEST_F(DatasetStepTest, DuringATransactionOfAnotherDatasetAStepIsRefused) {
    const Dataset other = Open();
    context->Write();
    job->BeginBatch(*other);
    try {
        const DatasetStep step(*context);
        FAIL();
    } catch (const CqSurveyException& failure) {
        EXPECT_EQ(failure.m_code, error::kInvalidArgument);
    }
    EXPECT_TRUE(job->HasBatchOf(*other));
    job->UndoBatch();
}

}  // namespace
}  // namespace cqsurvey::gdal
