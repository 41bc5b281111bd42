" Morvik: a line stands two columns in for each function, mark and literal that the lines before it leave open.
if exists('b:did_indent')
  finish
endif
let b:did_indent = 1
setlocal indentexpr=MorvikIndent(v:lnum) indentkeys=!^F,o,O,0;,0.,0)
let b:undo_indent = 'setlocal indentexpr< indentkeys<'

if exists('*MorvikIndent')
  finish
endif

" What a line opens, less what it closes. Strings and comments count for nothing.
function s:balance(text)
  let text = substitute(a:text, "'[^']*'\\|\"[^\"]*\"", '', 'g')
  let balance = 0
  for word in split(substitute(text, '[()]', ' & ', 'g'))
    if word =~# '^\%(:\|FUNCTION\|NEADIC\|NILADIC\|MONADIC\|DYADIC\|TRIADIC\|\[\.\|(\|`(\)$'
      let balance += 1
    elseif word =~# '^\%(;\.\?\|FUNCTIONEND\|\.\]\|)\)$'
      let balance -= 1
    endif
  endfor
  return balance
endfunction

function MorvikIndent(line)
  let before = prevnonblank(a:line - 1)
  if before == 0
    return 0
  endif
  let opened = s:balance(getline(before))
  " A line that begins with what closes has moved out by itself already.
  if getline(before) =~# '^\s*\%(;\|FUNCTIONEND\>\|\.\]\|)\)'
    let opened += 1
  endif
  let closes = getline(a:line) =~# '^\s*\%(;\|FUNCTIONEND\>\|\.\]\|)\)'
  return max([indent(before) + (opened - closes) * shiftwidth(), 0])
endfunction
