#include <morvane/morvane.h>

#include <iostream>

int main()
{
    cv::Mat depth(240, 320, CV_32FC1, 0.0F); // metres; 0 where nothing was measured
    depth(cv::Rect(20, 30, 100, 80)) = 4.5F;
    depth(cv::Rect(160, 90, 120, 60)) = 7.25F;

    cv::Mat labels(depth.size(), CV_32SC1);
    if (!morvane::connexity::Label(depth, morvane::connexity::eConnexity8, labels)) return 1;
    std::cout << "the second object has label " << labels.at<int>(90, 160) << " and " << cv::countNonZero(labels == 2)
              << " pixels\n";
}
