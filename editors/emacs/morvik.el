;;; morvik.el --- Major mode for Morvik  -*- lexical-binding: t; coding: utf-8 -*-

;; Colours, indentation, what belongs together, and an interpreter that regions and texts are sent to. The words are those
;; of morvik-grammar.el, which is made from the vocabulary of the scanner.

;;; Code:

(require 'comint)
(require 'morvik-grammar)

(defgroup morvik nil "Editing Morvik." :group 'languages)

(defcustom morvik-program "morvik"
  "The interpreter." :type 'string)

(defcustom morvik-indent 2
  "Columns that a function, a mark and a literal stand in by." :type 'integer)

;;;; Tokens

(defconst morvik--number-regexp
  (let ((part "\\(?:[-¯]?\\(?:[0-9]+\\(?:\\.[0-9]+\\)?\\|\\.[0-9]+\\)\\(?:[Ee][-+¯]?[0-9]+\\)?\\|[-¯]?Inf\\(?:inity\\)?\\|NaN\\)"))
    (concat "`?0#[01|]+`?\\|[#dr]*" part "\\(?:[i-v]" part "\\)*")))

(defconst morvik--opening-regexp ":\\|`?(\\|\\[\\.\\|MARK\\|\\(?:FUNCTION\\|NEADIC\\|\\(?:NIL\\|MON\\|DY\\|TRI\\)ADIC\\)")
(defconst morvik--closing '((";" . function) ("FUNCTIONEND" . function) (")" . literal) (".]" . mark)
                            ("COLLECTFROMMARK" . mark)))

(defun morvik--word (regexp)
  "The end of the word of REGEXP at point, or nil."
  (and (looking-at regexp) (match-end 1)))

(defun morvik--longest (&rest ends)
  "The (END . FACE) of ENDS that reaches furthest, the first of equals."
  (let (best)
    (dolist (end ends best)
      (when (and (car end) (or (null best) (> (car end) (car best)))) (setq best end)))))

(defun morvik--token ()
  "The token at point as (END . FACE)."
  (let ((case-fold-search nil))
    (or (and (looking-at "[\"¼⍝]") (cons (if (search-forward-regexp "[\"¼⍝]" nil t 2) (point) (point-max))
                                          'font-lock-comment-face))
        (and (looking-at "'\\(?:[^']\\|''\\)*'?") (cons (match-end 0) 'font-lock-string-face))
        (and (looking-at "`?(\\|)`?") (cons (match-end 0) 'font-lock-bracket-face))
        (and (looking-at "@[^ \t\n.;]*\\|@?[_$.%][A-Za-z_][0-9A-Za-z_]*") (cons (match-end 0) 'font-lock-variable-name-face))
        (morvik--longest (cons (morvik--word morvik-keyword-regexp) 'font-lock-builtin-face)
                         (cons (morvik--word morvik-constant-regexp) 'font-lock-constant-face)
                         (cons (and (looking-at morvik--number-regexp) (match-end 0)) 'font-lock-constant-face)
                         (cons (morvik--word morvik-structure-regexp) 'font-lock-keyword-face))
        (and (looking-at "[^ \t\n!.;][^ \t\n!.;]*") (cons (match-end 0) 'default))
        (cons (1+ (point)) 'default))))

(defun morvik--next (limit)
  "Moves over the next token before LIMIT. Returns (START END FACE), or nil."
  (skip-chars-forward " \t\n\r" limit)
  (when (< (point) limit)
    (let* ((start (point)) (token (save-excursion (morvik--token))))
      (goto-char (car token))
      (list start (car token) (cdr token)))))

(defun morvik--text-start (position)
  "A place at or before POSITION where no token is open.
That is the beginning of the buffer, or behind a blank line after a text."
  (save-excursion
    (goto-char position)
    (if (re-search-backward "\\.[ \t]*\n[ \t]*\n" nil t) (match-end 0) (point-min))))

(defun morvik--fontify (start end &optional _)
  "Colours the tokens between START and END."
  (save-excursion
    (goto-char (morvik--text-start start))
    (with-silent-modifications
      (remove-text-properties (point) end '(face nil))
      (let (token)
        (while (setq token (morvik--next end))
          (unless (eq (nth 2 token) 'default)
            (put-text-property (nth 0 token) (nth 1 token) 'face (nth 2 token)))))))
  `(jit-lock-bounds ,start . ,end))

;;;; What belongs together

(defun morvik--kind (text)
  "What TEXT opens: function, literal or mark; or nil."
  (cond ((member text '("(" "`(")) 'literal)
        ((member text '("[." "MARK")) 'mark)
        ((string-match-p (concat "\\`\\(?:" morvik--opening-regexp "\\)\\'") text) 'function)))

(defun morvik--pairs (end)
  "What belongs together up to END, as ((START . END) . (START . END)).
Behind the list of these stand the tokens that are still open."
  (save-excursion
    (goto-char (point-min))
    (let (open pairs token)
      (while (setq token (morvik--next end))
        (let* ((place (cons (nth 0 token) (nth 1 token)))
               (text (buffer-substring-no-properties (car place) (cdr place)))
               (kind (morvik--kind text)) (closes (cdr (assoc (string-trim-right text "`") morvik--closing))))
          (cond (kind (push (cons kind place) open))
                ((and closes (eq closes (caar open))) (push (cons (cdr (pop open)) place) pairs)))))
      (cons pairs open))))

(defun morvik-show-paren-data ()
  "For `show-paren-mode': what belongs to the token at point, or before it."
  (let ((here (point)) found)
    (dolist (pair (car (morvik--pairs (point-max))) found)
      (let ((one (car pair)) (other (cdr pair)))
        (when (or (= (car one) here) (= (cdr other) here))
          (when (= (cdr other) here) (setq one (cdr pair) other (car pair)))
          (setq found (list (car one) (cdr one) (car other) (cdr other) nil)))))))

;;;; Indentation

(defun morvik-indent-line ()
  "Indents the line by what the lines before it leave open."
  (interactive)
  (let* ((start (line-beginning-position))
         (open (cdr (morvik--pairs start)))
         (closes (save-excursion (goto-char start) (looking-at "[ \t]*\\(?:;\\|)\\|\\.\\]\\|FUNCTIONEND\\_>\\)")))
         (column (* morvik-indent (max 0 (- (length open) (if closes 1 0))))))
    (if (<= (current-column) (current-indentation))
        (indent-line-to column)
      (save-excursion (indent-line-to column)))))

;;;; An interpreter

(defun morvik--byte (char)
  "The byte of a sign, or CHAR as UTF-8."
  (let ((byte (cdr (assq char morvik-signs))))
    (if byte (unibyte-string byte) (encode-coding-string (string char) 'utf-8))))

(defun morvik-bytes (text &optional latin)
  "TEXT as the interpreter reads it.
With LATIN, each character is a byte already; otherwise a sign outside
strings is its byte, all else is UTF-8, and comments are left out."
  (if latin
      (encode-coding-string text 'latin-1)
    (with-temp-buffer
      (insert text)
      (goto-char (point-min))
      (let (token (parts nil) (done (point-min)))
        (while (setq token (morvik--next (point-max)))
          (push (buffer-substring-no-properties done (nth 0 token)) parts)
          (let ((part (buffer-substring-no-properties (nth 0 token) (nth 1 token))))
            (push (pcase (nth 2 token)
                    ('font-lock-string-face (encode-coding-string part 'utf-8))
                    ('font-lock-comment-face "")
                    (_ (mapconcat #'morvik--byte part "")))
                  parts))
          (setq done (nth 1 token)))
        (push (buffer-substring-no-properties done (point-max)) parts)
        (apply #'concat (mapcar #'string-to-unibyte (nreverse parts)))))))

;;;###autoload
(defun run-morvik ()
  "Starts an interpreter in a buffer of its own, or shows the one that runs."
  (interactive)
  (let ((buffer (make-comint "morvik" morvik-program)))
    (set-process-coding-system (get-buffer-process buffer) 'utf-8 'no-conversion)
    (with-current-buffer buffer (setq-local comint-prompt-regexp "^\\(?:Morvik\\|Inspect\\) \\[[0-9]+\\][>:] "))
    (display-buffer buffer)
    buffer))

(defun morvik-send-region (start end)
  "Sends what stands from START to END to the interpreter."
  (interactive "r")
  (process-send-string (get-buffer-process (run-morvik))
                       (concat (morvik-bytes (buffer-substring-no-properties start end)
                                             (eq (coding-system-base (or buffer-file-coding-system 'utf-8)) 'iso-latin-1))
                               "\n")))

(defun morvik-text-bounds ()
  "Where the text around point begins and ends."
  (save-excursion
    (let ((here (point)) (begin (point-min)) (end nil) token)
      (goto-char (point-min))
      (while (and (not end) (setq token (morvik--next (point-max))))
        (when (member (buffer-substring-no-properties (nth 0 token) (nth 1 token)) '("." "END"))
          (if (< (nth 1 token) here) (setq begin (nth 1 token)) (setq end (nth 1 token)))))
      (cons begin (or end (point-max))))))

(defun morvik-send-text ()
  "Sends the text around point to the interpreter."
  (interactive)
  (let ((bounds (morvik-text-bounds)))
    (morvik-send-region (car bounds) (cdr bounds))))

;;;; The mode

(defvar morvik-mode-syntax-table
  (let ((table (make-syntax-table)))
    (modify-syntax-entry ?\" "." table)
    (modify-syntax-entry ?' "." table)
    (modify-syntax-entry ?_ "w" table)
    table))

(defvar morvik-mode-map
  (let ((map (make-sparse-keymap)))
    (define-key map (kbd "C-c C-c") #'morvik-send-text)
    (define-key map (kbd "C-c C-r") #'morvik-send-region)
    (define-key map (kbd "C-c C-z") #'run-morvik)
    map))

;;;###autoload
(define-derived-mode morvik-mode prog-mode "Morvik"
  "Major mode for Morvik. \\{morvik-mode-map}"
  (setq-local comment-start "\"" comment-end "\"")
  (setq-local indent-line-function #'morvik-indent-line)
  (setq-local show-paren-data-function #'morvik-show-paren-data)
  (jit-lock-register #'morvik--fontify))

;; Source is bytes of a set of its own: read as Latin-1, no byte is changed.
;;;###autoload
(progn
  (add-to-list 'auto-mode-alist '("\\.morvik\\'" . morvik-mode))
  (add-to-list 'auto-coding-alist '("\\.morvik\\'" . latin-1)))

(provide 'morvik)
;;; morvik.el ends here
