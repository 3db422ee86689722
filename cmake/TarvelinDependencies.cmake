# The libraries that decode the artwork, and the test framework.
find_package(PNG REQUIRED)
find_package(JPEG REQUIRED)
