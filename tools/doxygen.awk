# For Doxygen: makes the comment of two slashes that a header opens with its file comment, line by line. A header
# without one gets a command that Doxygen refuses.
FNR == 1 && !/^\/\/ / { print "/// \\file_without_a_comment" }
FNR == 1 { opening = 1; mark = "/// \\file " FILENAME }
!/^\/\// { opening = 0 }
opening { sub(/^\/\//, mark); mark = "///" }
{ print }
