# cmake -DOUTPUT=shipped_looks.cpp -DINPUTS=a.lumilook|b.lumilook -P embed_texts.cmake
# Writes the looks that are shipped as C++: see hostkit/shipped_looks.h.
cmake_minimum_required(VERSION 3.25)
set(texts "")
string(REPLACE "|" ";" files "${INPUTS}")
foreach(file IN LISTS files)
  file(READ "${file}" text)
  string(APPEND texts "        R\"lumilook(${text})lumilook\",\n")
endforeach()
file(WRITE "${OUTPUT}" "#include \"hostkit/shipped_looks.h\"\n\nnamespace lumiset::hostkit {\n\n"
  "const std::vector<std::string_view>& shippedLooks() {\n    static const std::vector<std::string_view> looks = {\n"
  "${texts}    };\n    return looks;\n}\n\n}  // namespace lumiset::hostkit\n")
