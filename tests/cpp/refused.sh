#!/usr/bin/env bash
# refused.sh CXX INCLUDES FLAGS: formats that do not fit their arguments, and uses that would dangle or copy, are
# refused by the compiler, with the reason in its message. Lists are separated by semicolons.
set -euo pipefail
IFS=';' read -ra flags <<<"$2;$3"

compile() { # compile STATEMENTS: the compiler's messages
    printf '#include <kestu.hpp>\nint main() { int n = 0; std::string_view v; (void)n, (void)v; %s }\n' "$1" |
        "$cxx" -std=c++20 -fsyntax-only "${flags[@]}" -x c++ - 2>&1
}
cxx=$1
compile 'kestu::format("%d %.*s", n, v);' || { echo "what is right was refused"; exit 1; }
while IFS='|' read -r statement reason; do
    if message=$(compile "$statement"); then
        echo "not refused: $statement"
        exit 1
    fi
    grep -q "$reason" <<<"$message" || { echo "another reason than $reason: $statement"; exit 1; }
done <<'LIST'
kestu::format("%Lf", 1.0);|the_conversion_is_not_known
kestu::format("%f", 1.0L);|the_argument_does_not_fit
kestu::format("%s", v);|a_string_view_needs_a_precision
kestu::Error a(1), b(a);|delete
kestu::List<int> list; list.push_back(1);|push_back
LIST
