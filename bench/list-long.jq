# Prints what `akhostmgmt -list` prints for the server's reply; run it with -j.

"                                        " as $spaces
| def pad($width): . + $spaces[utf8bytelength:$width];

def yes: if . then "Yes" else "No" end;

def date: (. // 0) / 1000 | floor | strflocaltime("%b %d, %Y %I:%M:%S %p");

# A name of 16 bytes or more is cut to at most 15, between characters.
def trimmed:
  if utf8bytelength < 16 then .
  else .[:15] | until(utf8bytelength < 16; .[:-1]) | . + "~"
  end;

def mapping:
  "\n"
  + ((.mappedHostName // "") | trimmed | pad(20))
  + (.isApproved | yes | pad(14))
  + (.isConflicting | yes | pad(12))
  + (.isAddedManually == false | yes | pad(21))
  + (.isShared | yes | pad(11))
  + (.createdOn | date | pad(30))
  + (.updatedOn | date | pad(22));

def details:
  "\nHost ID                                  : \(.uuid // "")"
  + "\nHost                                     : \(.hostName // "")"
  + "\nMaster Server                            : \(.masterServer // "")"
  + "\nOS Type                                  : \(.osType // "")"
  + "\nOperating System                         : \(.osVersion // "")"
  + "\nArkeon EEBs                              : \(.installedEEBs // "")"
  + "\nArkeon Packages                          : \(.installedPackages // "")"
  + "\nQxUpdate Platform                        : \(.qxUpdatePlatform // "")"
  + "\nHardware Description                     : \(.hwDescription // "")"
  + "\nCPU Architecture                         : \(.cpuArchitecture // "")"
  + "\nVersion                                  : \(.akuVersion // "")"
  + "\nSecure                                   : \(.isSecureEnabled | yes)"
  + "\nComment                                  : \(.comment // "")"
  + "\nAllow Auto Reissue Certificate           : \(.autoReissue | yes)"
  + "\nTrust Version                            : \(.trustVersion // "")"
  + "\nAllow Auto Reissue Certificate Validity  : "
  + ((.autoReissueDuration // 0) | if . == 0 then "" else date end)
  + "\nSubject Name of External Certificate     : \(.externalCertificateSubject // "")"
  + "\nArkeon CA Issued Certificate             : \(.hasArkeonCaHostCertificate | yes)"
  + "\n\nMapped Host Name    Approved      Conflict    Auto-discovered      Shared     "
  + "Created On                    Last Updated On       ";

.hosts[]
| details,
  (.hostMappings[] | select(.isApproved == true) | mapping),
  (.hostMappings[] | select(.isApproved == false) | mapping),
  "\n"
