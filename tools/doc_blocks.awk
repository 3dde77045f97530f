# Writes the ```cpp blocks of a text as programs, <directory>/<line>.cpp, and prints their lines, one a line.
# A block that includes something is a program as it stands. Before any other goes what a text leaves out: the includes and
# the library's names in use; and around one without a main function, that function. What an ```output block right after
# it says, the program must print; it is written as <line>.expected.

function program() {
    here = "#line " (line + 1) " \"" FILENAME "\"\n"
    if (body ~ /#include/)
        return here body
    if (body !~ /int main\(/)
        return preamble "int main() {\n" here body "}\n"
    return preamble here body
}

BEGIN {
    preamble = "#include <iostream>\n#include <mutex>\n#include <thread>\n#include <vector>\n" \
        "#include <ToviFoundationKit/ToviFoundationKit.h>\nusing namespace tovi;\n"
}

/^```cpp$/ { inside = "cpp"; line = FNR; body = ""; next }
/^```output$/ && line { inside = "output"; printf "" > expected; next }
/^```$/ && inside == "cpp" {
    inside = ""
    expected = directory "/" line ".expected"
    printf "%s", program() > (directory "/" line ".cpp")
    print line
    next
}
/^```$/ && inside == "output" { inside = ""; line = 0; next }
inside == "cpp" { body = body $0 "\n"; next }
inside == "output" { print > expected; next }
/[^ ]/ { line = 0 }
