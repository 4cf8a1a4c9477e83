# SPDX-License-Identifier: MIT

"""Measures how text arrives in many programs, by dictation and by other means."""
