# The libraries that decode the artwork.
find_package(PNG REQUIRED)
find_package(JPEG REQUIRED)
