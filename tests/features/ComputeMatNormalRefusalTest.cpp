// What the driver of the strategies refuses, and what its outputs hold then.
#include <morvane/features/Normals.h>

#include "support/ImageLiterals.h"
#include "support/NormalOracle.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace morvane::features
{

namespace
{

using tests::EqualImages;
using tests::PointCloud;
using tests::Random;
using tests::Snapshot;

constexpr auto kNoMethod = static_cast<eNormalComputationMethod>(4);

/// A call with all its images.
struct Call
{
    explicit Call(cv::Size size = {7, 7}, int type = CV_32FC1)
    {
        Random random(730);
        tests::CloudMixture mixture;
        mixture.flatShare = 0.0;
        mixture.emptyShare = 0.0;
        cloud = tests::RoughCloud(random, size, type, mixture);
        normals = cv::Mat(size, CV_MAKETYPE(cloud.x.depth(), 3), cv::Scalar::all(3.0));
        rms = cv::Mat(size, type, cv::Scalar(3.0));
    }

    [[nodiscard]] bool Compute(eNormalComputationMethod method)
    {
        return ComputeMatNormal(cloud.depth, cloud.x, cloud.y, cloud.z, normals, rms, method, 1, false);
    }

    PointCloud cloud;
    cv::Mat normals;
    cv::Mat rms;
};

TEST(ComputeMatNormal, RefusesOtherInputsWithOutputsUntouched)
{
    using Change = void (*)(Call & call);
    std::vector<std::pair<std::string, Change>> const changes{
        {"empty depth",
         [](Call & call) {
             call.cloud.depth = cv::Mat();
         }},
        {"empty x",
         [](Call & call) {
             call.cloud.x = cv::Mat(0, 0, CV_32FC1);
         }},
        {"empty y",
         [](Call & call) {
             call.cloud.y = cv::Mat();
         }},
        {"empty z",
         [](Call & call) {
             call.cloud.z = cv::Mat();
         }},
        {"no rows",
         [](Call & call) {
             call.cloud = {
                 cv::Mat(0, 7, CV_32FC1), cv::Mat(0, 7, CV_32FC1), cv::Mat(0, 7, CV_32FC1), cv::Mat(0, 7, CV_32FC1)};
         }},
        {"wide x",
         [](Call & call) {
             call.cloud.x = cv::Mat(7, 8, CV_32FC1, cv::Scalar(1.0));
         }},
        {"high y",
         [](Call & call) {
             call.cloud.y = cv::Mat(8, 7, CV_32FC1, cv::Scalar(1.0));
         }},
        {"turned z",
         [](Call & call) {
             call.cloud.z = cv::Mat(1, 49, CV_32FC1, cv::Scalar(1.0));
         }},
        {"x of bytes",
         [](Call & call) {
             call.cloud.x.convertTo(call.cloud.x, CV_8U);
         }},
        {"x of integers",
         [](Call & call) {
             call.cloud.x.convertTo(call.cloud.x, CV_32S);
         }},
        {"x of halves",
         [](Call & call) {
             call.cloud.x.convertTo(call.cloud.x, CV_16F);
         }},
        {"x of doubles",
         [](Call & call) {
             call.cloud.x.convertTo(call.cloud.x, CV_64F);
         }},
        {"z of doubles",
         [](Call & call) {
             call.cloud.z.convertTo(call.cloud.z, CV_64F);
         }},
        {"y of doubles",
         [](Call & call) {
             call.cloud.y.convertTo(call.cloud.y, CV_64F);
         }},
        {"depth of halves",
         [](Call & call) {
             call.cloud.depth.convertTo(call.cloud.depth, CV_16F);
         }},
        {"two channels of depth",
         [](Call & call) {
             call.cloud.depth = cv::Mat(7, 7, CV_32FC2);
         }},
        {"two channels of x", [](Call & call) {
             call.cloud.x = cv::Mat(7, 7, CV_32FC2);
         }}};
    for (auto const & [name, change] : changes)
    {
        for (eNormalComputationMethod const method : {WindowMoving, Pyramid, PyramidWindowMoving, kNoMethod})
        {
            Call call;
            change(call);
            Snapshot const normals(call.normals);
            Snapshot const rms(call.rms);
            EXPECT_FALSE(call.Compute(method)) << name;
            EXPECT_TRUE(normals.IsUntouched()) << name;
            EXPECT_TRUE(rms.IsUntouched()) << name;
        }
    }
}

TEST(ComputeMatNormal, RefusesOtherInputsWithEmptyOutputsLeftEmpty)
{
    Call call;
    call.normals = cv::Mat();
    call.rms = cv::Mat();
    call.cloud.z = cv::Mat(8, 7, CV_32FC1, cv::Scalar(1.0));
    EXPECT_FALSE(call.Compute(WindowMoving));
    EXPECT_TRUE(call.normals.empty());
    EXPECT_TRUE(call.rms.empty());
}

TEST(ComputeMatNormal, RefusesOtherOutputsUntouched)
{
    using Change = void (*)(Call & call);
    std::vector<std::pair<std::string, Change>> const changes{
        {"small normals",
         [](Call & call) {
             call.normals = cv::Mat(7, 6, CV_32FC3, cv::Scalar::all(1.0));
         }},
        {"normals of doubles",
         [](Call & call) {
             call.normals = cv::Mat(7, 7, CV_64FC3, cv::Scalar::all(1.0));
         }},
        {"one channel of normals",
         [](Call & call) {
             call.normals = cv::Mat(7, 7, CV_32FC1, cv::Scalar(1.0));
         }},
        {"small rms",
         [](Call & call) {
             call.rms = cv::Mat(6, 7, CV_32FC1, cv::Scalar(1.0));
         }},
        {"rms of doubles", [](Call & call) {
             call.rms = cv::Mat(7, 7, CV_64FC1, cv::Scalar(1.0));
         }}};
    for (auto const & [name, change] : changes)
    {
        Call call;
        change(call);
        Snapshot const normals(call.normals);
        Snapshot const rms(call.rms);
        EXPECT_FALSE(call.Compute(WindowMoving)) << name;
        EXPECT_TRUE(normals.IsUntouched()) << name;
        EXPECT_TRUE(rms.IsUntouched()) << name;
    }
}

TEST(ComputeMatNormal, RefusesAnotherTypeOfYAfterEmptyOutputsWereMade)
{
    Call call;
    call.cloud.y.convertTo(call.cloud.y, CV_64F);
    call.normals = cv::Mat();
    EXPECT_FALSE(call.Compute(WindowMoving));
    EXPECT_TRUE(EqualImages(call.normals, cv::Mat::zeros(7, 7, CV_32FC3)));
    EXPECT_TRUE(EqualImages(call.rms, cv::Mat::zeros(7, 7, CV_32FC1)));
}

TEST(ComputeMatNormal, RefusesAnUnknownMethodAfterTheOutputsWerePrepared)
{
    for (int const method : {4, 5, 100, -1, std::numeric_limits<int>::max()})
    {
        for (int const type : {CV_32FC1, CV_64FC1})
        {
            Call call({7, 7}, type);
            cv::Mat const normals = call.normals.clone();
            EXPECT_FALSE(call.Compute(static_cast<eNormalComputationMethod>(method)));
            EXPECT_TRUE(EqualImages(call.normals, normals));
            EXPECT_TRUE(EqualImages(call.rms, cv::Mat(7, 7, type, cv::Scalar(25.0))));
            call.normals = cv::Mat();
            EXPECT_FALSE(call.Compute(static_cast<eNormalComputationMethod>(method)));
            EXPECT_TRUE(EqualImages(call.normals, cv::Mat::zeros(7, 7, normals.type())));
            EXPECT_TRUE(EqualImages(call.rms, cv::Mat(7, 7, type, cv::Scalar(25.0))));
        }
    }
}

} // namespace

} // namespace morvane::features
