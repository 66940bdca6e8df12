# All from Debian 12 packages; scripts/packages.txt lists them.

find_package(Qt5 5.15 REQUIRED COMPONENTS Core Gui Concurrent)
find_package(OpenCV 4 REQUIRED COMPONENTS core imgproc imgcodecs)
find_package(glog REQUIRED)
find_package(tl-expected REQUIRED)
find_package(Threads REQUIRED)
