"""A guided tour of the host on the headless desktop; `python3 -m tour` plays it."""
