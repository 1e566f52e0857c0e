#!/usr/bin/perl
# SPDX-License-Identifier: Apache-2.0
#
# Prints sizes, offsets, slot positions and enumeration values as the compiler has them:
#
#   abi-layout.pl <readelf> <object with debug information> <header name>...
#
# Only types that the named headers (base names) define are printed, sorted by name, so that the
# text depends on the interface alone. The object must hold one compilation unit, DWARF 4.

use strict;
use warnings;

my ($readelf, $object, @headers) = @ARGV;
die "usage: $0 <readelf> <object> <header>...\n" unless @headers;
my %ours = map { $_ => 1 } @headers;

# The numbers that DW_AT_decl_file refers to.
my %file_is_ours;
open(my $lines, '-|', $readelf, '--debug-dump=rawline', $object) or die "$readelf: $!\n";
my $in_files = 0;
while (<$lines>) {
  $in_files = 1 if /The File Name Table/;
  $in_files = 0 if /Line Number Statements/;
  $file_is_ours{$1} = 1
      if $in_files && /^\s+(\d+)\s+\d+\s+\d+\s+\d+\s+(\S+)\s*$/ && $ours{$2};
}
close($lines) or die "$readelf failed\n";
die "$object: no debug information about the named headers\n" unless %file_is_ours;

# One entry after another, each knowing the one that it stands in.
my (@entries, @open);
open(my $info, '-|', $readelf, '-W', '--debug-dump=info', $object) or die "$readelf: $!\n";
while (<$info>) {
  if (/^\s*<(\d+)><[0-9a-f]+>: Abbrev Number: \d+ \((DW_TAG_\w+)\)/) {
    my $entry = {tag => $2, parent => $1 > 0 ? $open[$1 - 1] : undef, children => []};
    push @{$entry->{parent}{children}}, $entry if $entry->{parent};
    $open[$1] = $entry;
    push @entries, $entry;
  } elsif (/^\s*<[0-9a-f]+>\s+(DW_AT_\w+)\s*: (.*?)\s*$/ && @entries) {
    my ($name, $value) = ($1, $2);
    # Newer versions of readelf name the form first.
    $value =~ s/^\([a-z]\w+\) //;
    $value =~ s/^\((?:indirect (?:line )?string, )?offset: [0-9a-fx]+\): //;
    $entries[-1]{$name} = $value;
  }
}
close($info) or die "$readelf failed\n";

sub number { my $text = shift; return $text =~ /^0x/ ? hex($text) : $text; }

my @printed;
for my $entry (@entries) {
  next unless ($entry->{tag} =~ /^DW_TAG_(structure|class|union|enumeration)_type$/);
  next if exists $entry->{DW_AT_declaration} || !$file_is_ours{$entry->{DW_AT_decl_file} // 0};
  next unless $entry->{parent} && $entry->{parent}{tag} eq 'DW_TAG_compile_unit';
  my $size = number($entry->{DW_AT_byte_size} // 0);
  if ($entry->{tag} eq 'DW_TAG_enumeration_type') {
    my @values = grep { $_->{tag} eq 'DW_TAG_enumerator' } @{$entry->{children}};
    my $name = $entry->{DW_AT_name} // "with $values[0]{DW_AT_name}";
    push @printed, join '', "enum $name: size $size\n",
        map { sprintf("  %s = %s\n", $_->{DW_AT_name}, number($_->{DW_AT_const_value})) } @values;
    next;
  }
  next unless $entry->{DW_AT_name};
  my $text = "record $entry->{DW_AT_name}: size $size\n";
  my @slots;
  for my $child (@{$entry->{children}}) {
    if ($child->{tag} eq 'DW_TAG_member' && defined $child->{DW_AT_data_member_location}) {
      $text .= sprintf "  %4d  %s\n", number($child->{DW_AT_data_member_location}),
          $child->{DW_AT_name} // '(unnamed)';
    } elsif (($child->{DW_AT_vtable_elem_location} // '') =~ /DW_OP_(?:constu: |lit)(\d+)/) {
      push @slots, [$1, $child->{DW_AT_linkage_name}];
    }
  }
  $text .= sprintf("  slot %3d  %s\n", @$_) for sort { $a->[0] <=> $b->[0] } @slots;
  push @printed, $text;
}
my %seen;
print join "\n", grep { !$seen{$_}++ } sort @printed;
