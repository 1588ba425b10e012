# [everything]
scripts/demo    # installs what is missing, builds, and shares real files from end to end
scripts/test    # the same set-up, then every test and check there is
# [everything]

# [release]
cmake --preset release && cmake --build --preset release
# [release]

# [reference]
cmake --build --preset release --target docs
xdg-open build/release/docs/reference/html/index.html
# [reference]

# [work]
cmake --preset dev
cmake --build --preset dev --target CloudTests
ctest --test-dir build/dev -R SessionController --output-on-failure
# [work]

# [fuzz]
scripts/fuzz 600 service-replies
# [fuzz]

# [packages]
scripts/package --build-only   # builds the packages of the last commit into build/packages
scripts/package                # the same, then everything below
# [packages]
