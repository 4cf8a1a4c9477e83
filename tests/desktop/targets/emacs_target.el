;;; emacs_target.el --- Keeps a journal of the text in Emacs and takes commands  -*- lexical-binding: t -*-
;; SPDX-License-Identifier: MIT

;;; Commentary:
;; The environment has the files: TARGET_JOURNAL, TARGET_OUT, and TARGET_COMMAND, whose command ("publish", "clear")
;; the signal USR1 carries out.  The end of a command removes that file.  The process number goes to TARGET_PID once
;; everything is ready.  Emacs knows the time of day alone: TARGET_CLOCK is the time of day, in seconds, at which
;; CLOCK_MONOTONIC began.

;;; Code:

(setq frame-title-format "emacs-target"
      inhibit-startup-screen t
      coding-system-for-write 'utf-8-unix)

(defvar target-clock (string-to-number (getenv "TARGET_CLOCK")))
(defvar target-journal "" "The lines that are not written yet.")

(defun target-write-journal ()
  "Append the collected lines to the journal."
  (unless (equal target-journal "")
    (write-region target-journal nil (getenv "TARGET_JOURNAL") t 'quiet)
    (setq target-journal "")))

(defun target-changed (&rest _)
  "Note the time of a change."
  (setq target-journal
        (concat target-journal
                (format "changed %d %d\n" (* 1e9 (- (float-time) target-clock)) (buffer-size)))))

(defun target-obey ()
  "Carry out the command in the file."
  (interactive)
  (let ((command (with-temp-buffer
                   (insert-file-contents (getenv "TARGET_COMMAND"))
                   (buffer-string))))
    (with-current-buffer "target"
      (if (equal command "clear")
          (erase-buffer)
        (write-region nil nil (getenv "TARGET_OUT") nil 'quiet))))
  (target-write-journal)
  (delete-file (getenv "TARGET_COMMAND")))

(define-key special-event-map [sigusr1] #'target-obey)
(switch-to-buffer "target")
(buffer-disable-undo)
(add-hook 'after-change-functions #'target-changed nil t)
(run-with-timer 0.02 0.02 #'target-write-journal)
(run-with-timer 0.5 nil
                (lambda ()
                  (write-region (number-to-string (emacs-pid)) nil (getenv "TARGET_PID") nil 'quiet)))

;;; emacs_target.el ends here
