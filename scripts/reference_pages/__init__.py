# SPDX-License-Identifier: MIT
"""What scripts/reference.py is made of: the interface, the texts about it, the examples, and the pages."""
