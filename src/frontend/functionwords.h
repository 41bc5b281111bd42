// The actions that open and close functions, and end the text.
#pragma once

namespace morvik {

// Opens a function with the text of its opening words. Messages 27, 807.
void openfunction(char *text);
// Closes the innermost function with a FUNCTIONEND Point of this name; complains where none is open. Messages 27, 807.
void closefunction(const char *text);
// Writes the END of the text, after the forced finish of what is open. Messages 27, 807.
void endtext(const char *text);
// Ends the innermost function at the position, without a FUNCTIONEND Point.
void endfunction();

}  // namespace morvik
