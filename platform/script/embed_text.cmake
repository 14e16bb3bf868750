# SPDX-License-Identifier: Apache-2.0
# Writes ${OUT}, a C++ source that holds the text of ${IN} as script::${NAME}.
file(READ ${IN} text)
file(WRITE ${OUT} "// SPDX-License-Identifier: Apache-2.0\n// Made from the text file of the same content; change that one.\n"
     "namespace script {\nextern const char ${NAME}[];\nconst char ${NAME}[] = R\"avcjs(${text})avcjs\";\n}  // namespace script\n")
