// The module's LISP functions, defined for each drawing as it loads.
#pragma once

// "lsp_CompareFile" (code 0): the interactive comparison of two named drawings; "lsp_CompareFiles_Silent"
// (code 1): the silent comparison, whose result (0 differences found, 1 otherwise) the call answers.
// Defines them in code order: RTERROR at the first that fails, else RTNORM.
int DefineLispFunctions();
// Removes them the same way.
int UndefineLispFunctions();
// Runs the function being invoked: RTERROR (and the host is told) for a code outside 0..1; -5008 without
// an argument list; 1 after "文件名不能为空" when both names are empty; else RTNORM after the run.
int InvokeLispFunction();
