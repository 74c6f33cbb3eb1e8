# Writes OUTPUT: the EXPRESS texts in DIRECTORY as constants of C++.

file(GLOB files ${DIRECTORY}/*.exp)
set(source "#include \"SchemaTexts.h\"\n\nnamespace exchange {\n")
foreach(file IN LISTS files)
    get_filename_component(name ${file} NAME_WE)
    file(READ ${file} text)
    string(APPEND source "\nconst char* const k_${name} = R\"express(${text})express\";\n")
endforeach()
string(APPEND source "\n}  // namespace exchange\n")
file(WRITE ${OUTPUT} "${source}")
