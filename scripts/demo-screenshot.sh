#!/bin/bash
# Saves a screenshot of the whole X display to the given PNG file.
import -window root "$1"
