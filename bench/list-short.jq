# What `akhostmgmt -list -short` prints for the server's reply; to be run with -j.

"                                        " as $blanks
| "\nHost ID                                 Mapped Names",
  (.hosts[]
   | (.hostName // "") as $primary
   | [.hostMappings[] | .mappedHostName // ""] as $names
   | (.uuid // "") as $id
   | "\n" + $id + $blanks[($id | utf8bytelength):]
     + ([($names | select(index([$primary])) | $primary), ($names[] | select(. != $primary))]
        | join(", "))
     + "\n")
