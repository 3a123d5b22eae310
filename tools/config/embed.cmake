# SPDX-License-Identifier: Apache-2.0
# Writes the files of a directory as C++ texts:
#   cmake -DDIRECTORY=... -DOUTPUT=... -DFILES=a.xml,b/c.xml -P embed.cmake
string(REPLACE "," ";" FILES "${FILES}")
set(text "// Made from config/ at build time.\n#include \"tools/config/Shipped.h\"\n\n")
string(APPEND text "namespace Config {\n\nconst std::vector<ShippedFile>& shippedFiles() {\n")
string(APPEND text "    static const std::vector<ShippedFile> kFiles = {\n")
foreach(file IN LISTS FILES)
    file(READ "${DIRECTORY}/${file}" content)
    string(APPEND text "{\"${file}\", R\"rovan_file(${content})rovan_file\"},\n")
endforeach()
string(APPEND text "    };\n    return kFiles;\n}\n\n}  // namespace Config\n")
file(WRITE "${OUTPUT}" "${text}")
